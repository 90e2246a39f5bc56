#include "KVProjectData/server/TypeLibrary.h"

#include "KVProjectData/KVProjectData.h"
#include "platform/automation/Dispatch.h"

namespace kv {
namespace {

constexpr const EnumDescription* kEnums[]{
    &kEnumDescription<DiscFormat>,      &kEnumDescription<TVStandard>,       &kEnumDescription<TargetType>,
    &kEnumDescription<ProjectOptions>,  &kEnumDescription<DiscSizeEnum>,     &kEnumDescription<DiscVideoType>,
    &kEnumDescription<TitleFlags>,      &kEnumDescription<TitleTypes>,       &kEnumDescription<VideoResolution>,
    &kEnumDescription<AspectRatio>,     &kEnumDescription<VideoFormat>,      &kEnumDescription<AudioFormat>,
    &kEnumDescription<WideDisplayMode>, &kEnumDescription<SubpictureFormat>, &kEnumDescription<DiscCommand>,
    &kEnumDescription<MenuTypes>,       &kEnumDescription<MenuFlags>,        &kEnumDescription<ContentStyle>,
    &kEnumDescription<SPUColourTypes>,  &kEnumDescription<MenuElementFlags>, &kEnumDescription<ButtonTypes>,
    &kEnumDescription<OverlayTypes>,    &kEnumDescription<OverlayHighlight>, &kEnumDescription<SourceTypes>,
    &kEnumDescription<TextTypes>,       &kEnumDescription<TextType>,         &kEnumDescription<TextHighlight>,
    &kEnumDescription<TextHandles>,     &kEnumDescription<TextColor>,        &kEnumDescription<TextJustifyFlags>,
    &kEnumDescription<TextStyles>,      &kEnumDescription<ArchivedFile>,
};

constexpr const RecordDescription* kRecords[]{
    &kRecordDescription<DiscCommandParams>, &kRecordDescription<FloatPoint>, &kRecordDescription<FloatRect>,
    &kRecordDescription<tagPOINTF>,         &kRecordDescription<RGBEntry>,   &kRecordDescription<SPUColourInfo>,
    &kRecordDescription<ButtonLinks>,       &kRecordDescription<GUID>,
};

constexpr const InterfaceDescription* kInterfaces[]{
    &kInterfaceDescription<IKVLocking>,
    &kInterfaceDescription<IKVEncodingParams>,
    &kInterfaceDescription<IKVCommandList>,
    &kInterfaceDescription<IKVTitle>,
    &kInterfaceDescription<IKVDataFile>,
    &kInterfaceDescription<IGroupInfoNode>,
    &kInterfaceDescription<IKVMenuElement>,
    &kInterfaceDescription<IKVMenuButton>,
    &kInterfaceDescription<IKVMenuOverlay>,
    &kInterfaceDescription<IKVMenuText>,
    &kInterfaceDescription<IKVMenuElementList>,
    &kInterfaceDescription<IKVMenu>,
    &kInterfaceDescription<IKVProjectData>,
    &kInterfaceDescription<_IKVProjectDataEvents>,
    &kInterfaceDescription<IKVFileService>,
    &kInterfaceDescription<IKVArchiveEvents>,
    &kInterfaceDescription<IKVProjectArchive>,
    &kInterfaceDescription<IKVProjectImport>,
    &kInterfaceDescription<IKVProjectImportEvents>,
    &kInterfaceDescription<IQ71ProjectImport>,
};

constexpr ClassDescription kClasses[]{
    {"CKVCommandList", &CLSID_KVCommandList, "IKVCommandList", {}},
    {"CKVEncodingParams", &CLSID_KVEncodingParams, "IKVEncodingParams", {}},
    {"CKVProjectData", &CLSID_KVProjectData, "IKVProjectData", "_IKVProjectDataEvents"},
    {"CKVFileService", &CLSID_KVFileService, "IKVFileService", {}},
    {"CKVTestImporter", &CLSID_KVTestImporter, "IKVProjectImport", {}},
    {"CKVMenuButton", &CLSID_KVMenuButton, "IKVMenuButton", {}},
    {"CGroupInfoNode", &CLSID_GroupInfoNode, "IGroupInfoNode", {}},
    {"CKVMenu", &CLSID_KVMenu, "IKVMenu", {}},
};

constexpr LibraryDescription kLibrary{.name = "KVProjectData",
                                      .help = "KVProjectData 1.0 Type Library",
                                      .libid = &LIBID_KVProjectData,
                                      .major = 1,
                                      .minor = 0,
                                      .locale = 1033,
                                      .enums = kEnums,
                                      .records = kRecords,
                                      .interfaces = kInterfaces,
                                      .classes = kClasses};

} // namespace

const LibraryDescription& ProjectTypeLibrary()
{
    return kLibrary;
}

const LibraryDescription* ModuleTypeLibrary()
{
    return &kLibrary;
}

} // namespace kv
