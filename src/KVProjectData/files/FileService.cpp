#include "KVProjectData/files/FileService.h"

#include "KVProjectData/IQ71ProjectImport.h"
#include "KVProjectData/Identities.h"
#include "KVProjectData/ResultCodes.h"
#include "KVProjectData/files/ProjectArchive.h"
#include "KVProjectData/files/ProjectProductions.h"
#include "KVProjectData/files/TemplateMenus.h"
#include "KVProjectData/persistence/ProjectDocument.h"
#include "KVProjectData/project/ProjectStoryboards.h"
#include "platform/com/Activation.h"
#include "platform/system/MessageBox.h"
#include "platform/system/Paths.h"

namespace kv {
namespace {

constexpr LONG kOldestVersion = 700;
constexpr LONG kFirstOwnVersion = 800;

/// The project behind an object. Throws Error(E_POINTER) for anything else.
ComPtr<IKVProjectData> ProjectOf(IUnknown* object)
{
    auto project = Query<IKVProjectData>(object);
    if (!project) throw Error(E_POINTER);
    return project;
}

std::u16string_view WithoutPrefix(std::u16string_view fileName)
{
    constexpr std::u16string_view kPrefix = u"file::";
    if (fileName.starts_with(kPrefix)) fileName.remove_prefix(kPrefix.size());
    return fileName;
}

/// Writes the project, the productions and the closing comment as one document.
HRESULT WriteProjectFile(IKVProjectData& project, std::u16string_view fileName)
{
    ComPtr<IXMLDOMDocument> document;
    ComPtr<IXMLDOMNode> comment;
    ComPtr<IXMLDOMElement> root;
    ThrowIfFailed(CreateProjectDocument(document.Put()));
    ThrowIfFailed(
        document->createComment(Bstr(u"DVD Project xml file created using KVProject object.").Get(), comment.Put()));
    ThrowIfFailed(document->appendChild(comment.Get(), nullptr));
    ThrowIfFailed(document->get_documentElement(root.Put()));
    constexpr int kLevel = 1;
    XmlMarkup markup(kLevel);
    XmlStandIns productions;
    SaveWithProductions(project, XmlElement(root.Get()), markup, productions);
    return SaveXml(document.Get(), fileName, markup, productions);
}

/// Loads a file. KV_E_FILE_DOES_NOT_PARSE when it is no document.
ComPtr<IXMLDOMDocument> ReadDocument(std::u16string_view fileName)
{
    ComPtr<IXMLDOMDocument> document;
    ThrowIfFailed(CreateInstance(CLSID_DOMDocument, document));
    ThrowIfFailed(document->put_async(VARIANT_FALSE));
    VARIANT_BOOL parsed = VARIANT_FALSE;
    const HRESULT loaded = document->load(Variant(fileName), &parsed);
    if (loaded == E_OUTOFMEMORY) throw Error(loaded);
    if (FAILED(loaded) || !parsed) throw Error(KV_E_FILE_DOES_NOT_PARSE);
    return document;
}

HRESULT ImportOldVersion(IXMLDOMElement& root, IUnknown* project)
{
    ComPtr<IQ71ProjectImport> importer;
    const HRESULT created = CreateInstance(CLSID_Q71ProjectImport, importer);
    return FAILED(created) ? created : importer->ImportXML(&root, project);
}

/// `load` brings the document's project into the object; its productions follow.
template <class Load>
HRESULT LoadWithProductions(IXMLDOMElement& root, IKVProjectData& project, Load&& load)
{
    ReserveOwners(XmlElement(&root));
    const HRESULT loaded = load();
    if (SUCCEEDED(loaded)) LoadProductions(project, XmlElement(&root));
    return loaded;
}

/// Where the project's own paths lead.
void ReadPaths(IKVProjectData& project, FilePlace& place)
{
    Bstr directory;
    ThrowIfFailed(project.get_ProjectDirectory(directory.Put()));
    place.SetProjectDirectory(directory.View());
    if (const auto storyboards = Query<IProjectStoryboards>(&project)) place.SetNames(storyboards->Names());
}

using StringGetter = HRESULT (IKVProjectData::*)(BSTR*);
using StringSetter = HRESULT (IKVProjectData::*)(BSTR);

/// `last` is the result of the last setter, or of a getter that failed.
void SetIfEmpty(IKVProjectData& project, StringGetter getter, StringSetter setter, const Bstr& value, HRESULT& last)
{
    Bstr current;
    const HRESULT read = (project.*getter)(current.Put());
    if (FAILED(read)) last = read;
    if (SUCCEEDED(read) && current.Empty()) last = (project.*setter)(value.Get());
}

/// Replaces a string that belongs to a caller.
void ReplaceString(BSTR& string, std::u16string_view text)
{
    Bstr::Attach(std::exchange(string, Bstr(text).Detach()));
}

} // namespace

HRESULT CKVFileService::SaveProject(BSTR bstrFileName, IUnknown* pUnkProject)
{
    return Guarded([&] {
        const auto project = ProjectOf(pUnkProject);
        const std::u16string_view fileName = WithoutPrefix(View(bstrFileName));
        if (fileName.empty()) return E_INVALIDARG;
        FilePlace place(fileName);
        ReadPaths(*project, place);
        const HRESULT placed = project->put_ProjectDirectory(Bstr(PathRemoveFileSpec(fileName)).Get());
        if (FAILED(placed)) return placed;
        PruneTemplateMenus(*project);
        const HRESULT written = Guarded([&] { return WriteProjectFile(*project, fileName); });
        // Also those of a file that could not be written, since the project has moved.
        if (const auto storyboards = Query<IProjectStoryboards>(project)) storyboards->KeepNames(place.Names());
        return written;
    });
}

HRESULT CKVFileService::Archive(BSTR bstrFileName, IUnknown* pUnkProject)
{
    return ArchiveProject(bstrFileName, pUnkProject, nullptr);
}

HRESULT CKVFileService::ArchiveProject(BSTR bstrFileName, IUnknown* pUnkProject, IKVArchiveEvents* pEvents)
{
    return Guarded([&] {
        const auto project = ProjectOf(pUnkProject);
        const std::u16string_view fileName = View(bstrFileName);
        if (fileName.empty()) return E_INVALIDARG;
        ProjectArchive(*project, fileName, pEvents).Run([&] { return WriteProjectFile(*project, fileName); });
        return S_OK;
    });
}

HRESULT CKVFileService::PlanArchive(BSTR bstrFileName, IUnknown* pUnkProject, IKVArchiveEvents* pEvents)
{
    return Guarded([&] {
        const auto project = ProjectOf(pUnkProject);
        if (View(bstrFileName).empty()) return E_INVALIDARG;
        ProjectArchive(*project, View(bstrFileName), pEvents).Plan();
        return S_OK;
    });
}

HRESULT CKVFileService::LoadProject(BSTR bstrFileName, IUnknown* pUnkProject)
{
    return Guarded([&] {
        const auto project = ProjectOf(pUnkProject);
        const std::u16string_view fileName = WithoutPrefix(View(bstrFileName));
        if (!PathFileExists(fileName)) {
            ShowMessageBox(fileName, u"No such file");
            return E_INVALIDARG;
        }
        FilePlace place(fileName);
        const ComPtr<IXMLDOMDocument> document = ReadDocument(fileName);
        ComPtr<IXMLDOMElement> root;
        document->get_documentElement(root.Put());
        if (!root) return E_POINTER;
        LONG version = 0;
        HRESULT result = ProjectVersion(document.Get(), version);
        if (FAILED(result)) return result;
        if (version < kOldestVersion) return KV_E_FILE_TOO_OLD;
        result = LoadWithProductions(*root, *project, [&] {
            return version < kFirstOwnVersion ? ImportOldVersion(*root, pUnkProject) : project->loadXML(root.Get());
        });
        if (FAILED(result)) return result;
        if (const auto storyboards = Query<IProjectStoryboards>(project)) storyboards->KeepNames(place.Names());

        result = project->put_ProjectDirectory(Bstr(PathRemoveFileSpec(fileName)).Get());
        if (FAILED(result)) return result;
        const Bstr baseName(PathRemoveExtension(PathFindFileName(fileName)));
        SetIfEmpty(*project, &IKVProjectData::get_Label, &IKVProjectData::put_Label, baseName, result);
        SetIfEmpty(*project, &IKVProjectData::get_DisplayName, &IKVProjectData::put_DisplayName, baseName, result);
        return result;
    });
}

HRESULT CKVFileService::PersistToXML(IXMLDOMNode* pRoot, IUnknown* pUnkProject)
{
    return Guarded([&] { return ProjectOf(pUnkProject)->SaveXML(pRoot); });
}

HRESULT CKVFileService::PersistFromXML(IXMLDOMNode* pRoot, IUnknown* pUnkProject)
{
    return Guarded([&] { return ProjectOf(pUnkProject)->loadXML(pRoot); });
}

HRESULT CKVFileService::ResolveFilePath(BSTR* bstrFileName)
{
    return Guarded([&] {
        if (!bstrFileName) return E_POINTER;
        ReplaceString(*bstrFileName, m_paths->Resolve(View(*bstrFileName)));
        return S_OK;
    });
}

HRESULT CKVFileService::UnresolveFilePath(BSTR* bstrFileName)
{
    return Guarded([&] {
        if (!bstrFileName) return E_POINTER;
        ReplaceString(*bstrFileName, m_paths->Unresolve(View(*bstrFileName)));
        return S_OK;
    });
}

} // namespace kv
