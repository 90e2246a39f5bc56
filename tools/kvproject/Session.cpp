#include "Session.h"

#include "Failure.h"
#include "KVProjectData/Engine/Classes.h"
#include "KVProjectData/Identities.h"
#include "KVProjectData/ResultCodes.h"
#include "platform/com/Activation.h"
#include "platform/system/MessageBox.h"
#include "platform/system/Paths.h"
#include "platform/system/Registry.h"

#include <cstdlib>
#include <filesystem>
#include <set>
#include <unistd.h>

namespace kvproject {
namespace {

std::string Library(const char* name)
{
    const char* named = std::getenv("KVPROJECT_LIBRARY_DIR");
    const std::filesystem::path folder = named && *named
                                             ? std::filesystem::path(named)
                                             : std::filesystem::path(kv::HostFolder()) / KVPROJECT_LIBRARY_DIR;
    std::error_code error;
    for (const auto& candidate : {folder / name, std::filesystem::path(kv::HostFolder()) / "../lib" / name}) {
        // The name stays as it is: what it links to changes with every version.
        if (std::filesystem::exists(candidate, error))
            return (std::filesystem::canonical(candidate.parent_path(), error) / name).string();
    }
    return (folder / name).string();
}

void ForEachLibrary(HRESULT (*change)(std::u16string_view), std::string_view what)
{
    kv::Registry::Batch batch;
    for (const std::string& library : {ProjectLibrary(), EngineLibrary()})
        Require(change(kv::ToUtf16(library)), std::string(what) + " " + library);
    Require(batch.Commit(), "cannot write the registry");
}

/// Enters the place of the engine for its classes. Registering the engine would load it, and with it more libraries
/// than anything that a project without productions needs.
void RegisterEngineClasses()
{
    const std::string library = EngineLibrary();
    if (access(library.c_str(), R_OK) != 0) throw Failure("cannot register " + library + ": it is not there");
    for (const CLSID& clsid : kv::kEngineClasses) {
        Require(kv::Registry::Set(kv::Hive::ClassesRoot, u"CLSID\\" + kv::GuidText(clsid) + u"\\InprocServer32", {},
                                  kv::ToUtf16(library)),
                "cannot register " + library);
    }
}

template <class T>
kv::ComPtr<T> CreateByName(const OLECHAR* progId)
{
    CLSID clsid{};
    kv::ComPtr<T> object;
    HRESULT result = CLSIDFromProgID(progId, &clsid);
    if (SUCCEEDED(result)) result = kv::CreateInstance(clsid, object);
    Require(result, "cannot create " + kv::ToUtf8(progId));
    return object;
}

/// The library drops a leading "file::", which is a part of the name here.
kv::Bstr FileName(const std::string& file)
{
    return kv::Bstr(kv::ToUtf16(file.starts_with("file::") ? "./" + file : file));
}

} // namespace

std::string ProjectLibrary()
{
    return Library("libKVProjectData.so");
}

std::string EngineLibrary()
{
    return Library("libKVEngine.so");
}

void Register()
{
    ForEachLibrary(&kv::RegisterServer, "cannot register");
}

void Unregister()
{
    ForEachLibrary(&kv::UnregisterServer, "cannot unregister");
}

void RegisterForThisProcess()
{
    static bool registered = false;
    if (registered) return;
    kv::Registry::UseMemory();
    Require(kv::RegisterServer(kv::ToUtf16(ProjectLibrary())), "cannot register " + ProjectLibrary());
    RegisterEngineClasses();
    // The failures that a message box would tell are told by the commands themselves.
    kv::SetMessageBoxHook([](std::u16string_view, std::u16string_view) {});
    registered = true;
}

void RegisterImporters()
{
    // Libraries of other makers, of which the registry in memory knows nothing.
    std::set<std::u16string> libraries;
    for (const CLSID& clsid : kv::ClassesOfCategory(CATID_KVProjectImport)) {
        std::u16string library =
            kv::Registry::QueryText(kv::Hive::ClassesRoot, u"CLSID\\" + kv::GuidText(clsid) + u"\\InprocServer32", {});
        if (kv::PathFindFileName(library) != u"libKVEngine.so") libraries.insert(std::move(library));
    }
    RegisterForThisProcess();
    Require(kv::RegisterServer(kv::ToUtf16(EngineLibrary())), "cannot register " + EngineLibrary());
    for (const std::u16string& library : libraries) {
        const HRESULT registered = kv::RegisterServer(library);
        if (FAILED(registered)) TellFailure(kv::ToUtf8(library) + ": " + Describe(registered));
    }
}

Session::Session()
{
    RegisterForThisProcess();
    m_project = CreateByName<IKVProjectData>(PROGID_KVProjectData);
    m_files = CreateByName<IKVFileService>(PROGID_KVFileService);
}

Session::~Session() = default;

void Session::Load(const std::string& file)
{
    std::error_code error;
    const auto status = std::filesystem::status(file, error);
    if (!std::filesystem::exists(status)) throw Failure("cannot load " + file + ": the file does not exist");
    if (std::filesystem::is_directory(status)) throw Failure("cannot load " + file + ": a folder, no file");
    if (!std::filesystem::is_regular_file(status)) throw Failure("cannot load " + file + ": no regular file");
    if (access(file.c_str(), R_OK) != 0) throw Failure("cannot load " + file + ": the file may not be read");
    const HRESULT result = m_files->LoadProject(FileName(file).Get(), m_project.Get());
    const std::string what = "cannot load " + file + ": ";
    if (result == KV_E_FILE_DOES_NOT_PARSE) throw Failure(what + Describe(result) + ": " + ParseFailure(file));
    if (result == REGDB_E_CLASSNOTREG)
        throw Failure(what + Describe(result, "the file is of an older format whose importer is not installed"));
    // Of a document that parses the version alone is refused.
    if (result == DISP_E_TYPEMISMATCH || result == DISP_E_OVERFLOW)
        throw Failure(what + "the attribute \"Version\" of the project: " + Describe(result));
    Require(result, "cannot load " + file);
}

void Session::Save(const std::string& file)
{
    const HRESULT result = m_files->SaveProject(FileName(file).Get(), m_project.Get());
    const std::filesystem::path folder = std::filesystem::path(file).parent_path();
    std::error_code error;
    if (FAILED(result) && !folder.empty() && !std::filesystem::is_directory(folder, error)) {
        throw Failure("cannot save " + file + ": " + Describe(result, "there is no folder " + folder.string()));
    }
    Require(result, "cannot save " + file);
}

HRESULT Session::Archive(const std::string& file, bool planned, IKVArchiveEvents& events) const
{
    const auto archive = kv::Query<IKVProjectArchive>(m_files);
    if (!archive) return E_NOINTERFACE;
    const kv::Bstr name = FileName(file);
    return planned ? archive->PlanArchive(name.Get(), m_project.Get(), &events)
                   : archive->ArchiveProject(name.Get(), m_project.Get(), &events);
}

kv::Bstr Session::Resolved(std::string_view path) const
{
    kv::Bstr resolved(kv::ToUtf16(path));
    BSTR text = resolved.Detach();
    const HRESULT result = m_files->ResolveFilePath(&text);
    resolved = kv::Bstr::Attach(text);
    Require(result, "cannot read a path");
    return resolved;
}

kv::ComPtr<IXMLDOMDocument> Session::Document() const
{
    kv::ComPtr<IXMLDOMDocument> document;
    kv::ComPtr<IXMLDOMElement> root;
    Require(kv::CreateInstance(CLSID_DOMDocument, document), "cannot create a document");
    Require(document->createElement(kv::Bstr(u"Root").Get(), root.Put()), "cannot create a document");
    Require(document->putref_documentElement(root.Get()), "cannot create a document");
    Require(m_project->SaveXML(root.Get()), "cannot write the project");
    return document;
}

std::string ParseFailure(const std::string& file)
{
    kv::ComPtr<IXMLDOMDocument> document;
    Require(kv::CreateInstance(CLSID_DOMDocument, document), "cannot create a document");
    VARIANT_BOOL parsed = VARIANT_FALSE;
    const HRESULT loaded = document->load(kv::Variant(kv::ToUtf16(file)), &parsed);
    if (SUCCEEDED(loaded) && parsed) return {};
    kv::ComPtr<IXMLDOMParseError> error;
    document->get_parseError(error.Put());
    LONG line = 0;
    LONG position = 0;
    kv::Bstr reason;
    if (error) {
        error->get_line(&line);
        error->get_linepos(&position);
        error->get_reason(reason.Put());
    }
    std::string text = reason.Empty() ? Describe(loaded) : kv::ToUtf8(reason.View());
    if (line > 0) text = "line " + std::to_string(line) + ", position " + std::to_string(position) + ": " + text;
    return text;
}

} // namespace kvproject
