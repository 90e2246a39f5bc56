#include "platform/automation/TypeInfo.h"

#include "KVProjectData/Engine.h"
#include "support/Host.h"

#include <map>
#include <sstream>

namespace {

using kv::Bstr;
using kv::ComPtr;
using kv::Variant;

/// Unloads what can be unloaded of the library under test, but not the engine: the media libraries below it keep
/// memory that they would lose sight of.
void UnloadUnusedLibrary()
{
    const auto engine = kv::test::Create<IUnknown>(CLSID_ZXMediaInformation);
    CoFreeUnusedLibrariesEx(0, 0);
}

TEST(TypeLibraryTest, TypesOutliveTheirLibraryAndTheirObjects)
{
    kv::test::RegisterServers();
    ComPtr<ITypeLib> library;
    ASSERT_EQ(LoadRegTypeLib(LIBID_KVProjectData, 1, 0, LOCALE_SYSTEM_DEFAULT, library.Put()), S_OK);
    ComPtr<ITypeInfo> info;
    ASSERT_EQ(library->GetTypeInfoOfGuid(IKVEncodingParams::IID, info.Put()), S_OK);
    library.Reset();
    for (const bool again : {false, true}) {
        // Nothing but a type info needs the server library now.
        ASSERT_EQ(again ? kv::test::NewProject()->GetTypeInfo(0, 0, info.Put()) : S_OK, S_OK);
        UnloadUnusedLibrary();
        Bstr name;
        EXPECT_EQ(info->GetDocumentation(DISPID_UNKNOWN, name.Put(), nullptr), S_OK);
        EXPECT_EQ(name.View(), again ? u"IKVProjectData" : u"IKVEncodingParams");
        if (again) continue;
        OLECHAR member[] = u"videobitrate";
        OLECHAR* names[] = {member};
        DISPID id = DISPID_UNKNOWN;
        ASSERT_EQ(info->GetIDsOfNames(names, 1, &id), S_OK);
        const auto parameters = kv::test::Create<IKVEncodingParams>(CLSID_KVEncodingParams);
        Variant bitrate(LONG{4'000'000});
        DISPPARAMS put{&bitrate, nullptr, 1, 0};
        EXPECT_EQ(info->Invoke(parameters.Get(), id, DISPATCH_PROPERTYPUT, &put, nullptr, nullptr, nullptr), S_OK);
        EXPECT_EQ(kv::test::ValueOf(*parameters.Get(), &IKVEncodingParams::get_VideoBitrate), 4'000'000);
    }
}

/// The types that a type's parameters and fields are of, behind their pointers, which the type refers to.
std::vector<ComPtr<ITypeInfo>> ReferredTypes(ITypeInfo& info)
{
    std::vector<ComPtr<ITypeInfo>> types;
    const auto add = [&](const TYPEDESC& described) {
        const TYPEDESC* type = &described;
        while (type->vt == VT_PTR)
            type = type->lptdesc;
        if (type->vt != VT_USERDEFINED) return;
        EXPECT_EQ(info.GetRefTypeInfo(type->hreftype, types.emplace_back().Put()), S_OK);
    };
    FUNCDESC* function = nullptr;
    for (ULONG i = 0; info.GetFuncDesc(i, &function) == S_OK; ++i) {
        for (SHORT k = 0; k < function->cParams; ++k)
            add(function->lprgelemdescParam[k].tdesc);
        info.ReleaseFuncDesc(function);
    }
    VARDESC* variable = nullptr;
    for (ULONG i = 0; info.GetVarDesc(i, &variable) == S_OK; ++i) {
        add(variable->elemdescVar.tdesc);
        info.ReleaseVarDesc(variable);
    }
    return types;
}

TEST(TypeLibraryTest, KnowsEveryTypeThatItMentions)
{
    kv::test::RegisterServers();
    ComPtr<ITypeLib> library;
    ASSERT_EQ(LoadRegTypeLib(LIBID_KVProjectData, 1, 0, LOCALE_SYSTEM_DEFAULT, library.Put()), S_OK);
    std::map<std::u16string, std::u16string> foreign;
    for (ULONG i = 0; i < library->GetTypeInfoCount(); ++i) {
        ComPtr<ITypeInfo> info;
        ASSERT_EQ(library->GetTypeInfo(i, info.Put()), S_OK);
        for (const auto& type : ReferredTypes(*info)) {
            ASSERT_TRUE(type);
            ComPtr<ITypeLib> home;
            if (type->GetContainingTypeLib(home.Put(), nullptr) == S_OK) continue;
            Bstr name;
            TYPEATTR* attributes = nullptr;
            type->GetDocumentation(DISPID_UNKNOWN, name.Put(), nullptr);
            ASSERT_EQ(type->GetTypeAttr(&attributes), S_OK);
            foreign[std::u16string(name.View())] = kv::GuidText(attributes->guid);
            type->ReleaseTypeAttr(attributes);
        }
    }
    EXPECT_EQ(foreign,
              (std::map<std::u16string, std::u16string>{{u"IOleUndoManager", kv::GuidText(IOleUndoManager::IID)},
                                                        {u"IXMLDOMNode", kv::GuidText(IXMLDOMNode::IID)}}));
}

/// "First slot+slots: Property=id Reading.id Method()id …", in slot order.
std::string Slots(const kv::InterfaceDescription& interface)
{
    std::ostringstream text;
    text << interface.firstSlot << '+' << interface.members.size() << ':' << std::hex;
    for (std::size_t i = 0; i < interface.members.size(); ++i) {
        const kv::MemberDescription& member = interface.members[i];
        const bool written = i + 1 < interface.members.size() && interface.members[i + 1].kind == DISPATCH_PROPERTYPUT;
        const bool read = member.kind == DISPATCH_PROPERTYGET;
        EXPECT_TRUE(!written || (read && interface.members[i + 1].id == member.id)) << member.name;
        text << ' ' << member.name << (written ? "=" : read ? "." : "()") << member.id;
        i += written;
    }
    return text.str();
}

TEST(TypeLibraryTest, MembersOfMenusStandInTheirSlots)
{
    const std::pair<const kv::InterfaceDescription&, std::string_view> rows[] = {
        {kv::kInterfaceDescription<IKVMenu>,
         "7+81: ID.1 Tag=2 Flags=3 ButtonCount.12c TextCount.14c ElementCount.14d Audio=12e Background=12d "
         "LayoutRect=12f ButtonLayout=130 TemplateID=a DefaultButton=132 Label=4 BkgndID=133 "
         "BackgroundMute=167 BackgroundAudioMute=168 GetProduction()7 GetBackgroundProduction()13d "
         "GetButton()135 GetText()14e GetMenuElement()14f GetSubpictureColours()136 "
         "SetSubpictureColours()137 GetPalette()138 SetPalette()139 loadXML()5 SaveXML()6 "
         "GetProject()8 IsNative.131 SetNative()13a Duration=134 SetPreProduceProduction()13b "
         "GetPreProduceProduction()13c GetSmartAudio()13e GetButtonPosition()13f "
         "SetButtonPosition()140 AddtoGroup()141 GetGroupByGroupID()150 GetGroupIDByElementID()142 "
         "RemoveGroup()143 CopyGroupInfoList()14a ClearGroupInfoList()14b MoveElementOrder()151 "
         "SetTempSubMenuText()152 GetTempSubMenuText()153 SetTempCmdButton()154 GetTempCmdButton()155 "
         "ResizeMenuBackground()156 GetMenuBackgroundPanelSource()157 SetMenuBackgroundFadeInOut()158 "
         "GetMenuBackgroundFadeInOut()159 IsMenuBackgroundLoopPlay=15a SetMenuBackgroundCrop()15b "
         "GetMenuBackgroundCrop()15c GetMenuBackgroundAspectRatio()15d IsMenuBackgroundFill()15e "
         "SetMenuBackgroundCropMode()15f SetMenuBackgroundAudioVolume()160 "
         "GetMenuBackgroundAudioVolume()161 SetMenuBackgroundVolume()162 GetMenuBackgroundVolume()163 "
         "SetMenuBackgroundAudioFadeEnable()164 GetMenuBackgroundAudioFadeEnable()165 "
         "PutBackgroundWithTrim()166 ExtractBackgroundThumbnail()169 AdjustNativeDuration()16a "
         "ReNewID()16b"},
        {kv::kInterfaceDescription<IKVMenuElementList>,
         "7+8: ElementCount.258 GetElement()259 AddElement()25a InsertElement()25b RemoveElement()25c "
         "MoveElement()25d FindElement()25e Clear()9"},
        {kv::kInterfaceDescription<IKVMenuElement>,
         "7+25: ID.1 Tag=2 Flags=3 IsDirty=b Rotation=1f4 ZOrder=1f5 GetPosition()1f7 SetPosition()1f8 "
         "GetBoundingBox()1fa GetExtent()1f9 GetWidthHeight()1ff SetWidthHeight()200 "
         "GetParentList()1fb GetMenu()2a Copy()1fc set_ID()1fe EffectID.1f6 TemplateID=a "
         "SetTimeOffsets()1fd"},
        {kv::kInterfaceDescription<IKVMenuOverlay>,
         "32+41: GetSize()326 SetSize()327 Source=c8 AlphaMask=320 Highlight=321 InPoint=322 "
         "OutPoint=323 Label=4 StillImage=324 SetSourceType()329 GetSourceType()328 PrivateId=325 "
         "DynamicScalingFactor=32a SetMaskSize()32b GetMaskSize()32c ZoomSource=32d ZoomMask=32e "
         "SetSourceScale()330 GetSourceScale()32f ClearForResolve()331 SourceRotation=332 "
         "RefreshSource()333 ExtractThumbnail()334 GetCropedRect()335 SetCropedRect()336 "
         "GetSourceMediaSize()337 TryGetSourceMediaSize()338 OverlayType=339"},
        {kv::kInterfaceDescription<IKVMenuText>,
         "32+30: String=384 Justify=385 Highlight=321 height=386 SelectedStyleId=393 Font=387 "
         "Style=388 Handle=389 GetColor()38a SetColor()38b GetEffectXML()38c SetEffectXML()38d "
         "HeightString=38e TextType=38f SetTextBoxWidth()390 GetTextBoxWidth()391 IsEditable=392 "
         "CommandIndex=2cb"},
        {kv::kInterfaceDescription<IGroupInfoNode>,
         "7+9: ID.1 GetGroupSize()144 GetElementIDInGroup()145 GetGroupRect()146 SetGroupRect()147 "
         "GetGroupRotation()148 SetGroupRotation()149 SetGroupOriginAspect()16d "
         "GetGroupOriginAspect()16c"},
        {kv::kInterfaceDescription<IKVMenuButton>,
         "32+31: ActiveRegion=2bc ButtonLinks=2bd ButtonScheme=2be Label=4 UserData=2bf loadXML()5 "
         "SaveXML()6 GetAnchorElement()2c1 GetButtonBindText()2c8 GetButtonOverlay()2c9 ApplyTo()2c2 "
         "GetHighlightRegion()2c3 ButtonStyle=2c0 ButtonTextCache=2c4 ButtonSource=2c5 "
         "ButtonOverlayCount.2ca ButtonSourceHighlight=2c6 UseCustomOverlayOnButton()2c7 Move()201 "
         "ResetID()202 CommandIndex=2cb"},
    };
    for (const auto& [interface, slots] : rows)
        EXPECT_EQ(Slots(interface), slots) << interface.name;
}

TEST(TypeLibraryTest, EventsTakeInputAlone)
{
    for (const kv::MemberDescription& event : kv::kInterfaceDescription<_IKVProjectDataEvents>.members) {
        for (const kv::ParameterDescription& parameter : event.Parameters())
            EXPECT_EQ(parameter.flags, kv::kParameterIn) << event.name << ' ' << parameter.name;
    }
}

} // namespace
