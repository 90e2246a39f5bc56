#pragma once
// What the library requires of the host's storyboard engine, by object.

#include "KVProjectData/Engine/Audio.h"
#include "KVProjectData/Engine/Effects.h"
#include "KVProjectData/Engine/Events.h"
#include "KVProjectData/Engine/Frames.h"
#include "KVProjectData/Engine/Media.h"
#include "KVProjectData/Engine/Parameters.h"
#include "KVProjectData/Engine/Persist.h"
#include "KVProjectData/Engine/Production.h"
#include "KVProjectData/Engine/Sources.h"
#include "KVProjectData/Engine/Strings.h"
#include "KVProjectData/Engine/Text.h"
#include "KVProjectData/Engine/TextMarkup.h"
#include "KVProjectData/Engine/UndoGroup.h"
