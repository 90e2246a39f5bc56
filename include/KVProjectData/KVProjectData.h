#pragma once
// Everything a host needs of the library.

#include "KVProjectData/Enumerations.h"
#include "KVProjectData/ICPSUndoParentEnum.h"
#include "KVProjectData/IKVCommandList.h"
#include "KVProjectData/IKVDataFile.h"
#include "KVProjectData/IKVEncodingParams.h"
#include "KVProjectData/IKVFileService.h"
#include "KVProjectData/IKVLocking.h"
#include "KVProjectData/IKVMenu.h"
#include "KVProjectData/IKVProjectData.h"
#include "KVProjectData/IKVTitle.h"
#include "KVProjectData/Identities.h"
#include "KVProjectData/ProjectDataEvents.h"
#include "KVProjectData/ResultCodes.h"
