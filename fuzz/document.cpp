// Any bytes as a project file: they load or are refused, and what has loaded is saved, loaded and saved alike.

#include "Fuzz.h"

#include <cstdint>
#include <string>
#include <sys/mman.h>
#include <unistd.h>

namespace kv::fuzz {
namespace {

/// A file in memory, under a path that the library opens.
class MemoryFile {
public:
    MemoryFile(const std::uint8_t* data, std::size_t size) : m_file(memfd_create("project", 0))
    {
        Require(m_file >= 0 && write(m_file, data, size) == static_cast<ssize_t>(size), "the input is in memory");
    }
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;
    ~MemoryFile() { close(m_file); }

    Bstr Path() const { return Bstr(ToUtf16("/proc/self/fd/" + std::to_string(m_file))); }

private:
    int m_file;
};

/// The project as markup; empty when it holds what a document cannot.
std::u16string Saved(IKVProjectData& project)
{
    const auto document = Create<IXMLDOMDocument>(CLSID_DOMDocument);
    ComPtr<IXMLDOMElement> root;
    Bstr xml;
    document->createElement(Bstr(u"Root").Get(), root.Put());
    document->putref_documentElement(root.Get());
    if (FAILED(project.SaveXML(root.Get()))) return {};
    Require(SUCCEEDED(document->get_xml(xml.Put())), "a document has markup");
    return std::u16string(xml.View());
}

/// What the project saves when it has loaded markup that was saved.
std::u16string Reloaded(IKVProjectData& project, const std::u16string& markup)
{
    const auto document = Create<IXMLDOMDocument>(CLSID_DOMDocument);
    VARIANT_BOOL parsed = VARIANT_FALSE;
    document->loadXML(Bstr(markup).Get(), &parsed);
    Require(parsed, "what was saved parses");
    Require(SUCCEEDED(project.loadXML(document.Get())), "what was saved loads");
    return Saved(project);
}

void LoadAndSave(const MemoryFile& file)
{
    const auto project = Create<IKVProjectData>(CLSID_KVProjectData);
    const auto files = Create<IKVFileService>(CLSID_KVFileService);
    if (FAILED(files->LoadProject(file.Path().Get(), project.Get()))) return;
    const std::u16string first = Saved(*project.Get());
    Require(!first.empty(), "a loaded project can be saved");

    LONG menus = 0;
    project->get_MenuCount(&menus);
    const std::u16string second = Reloaded(*project.Get(), first);
    // Effects are their productions': what a menu's elements show without them is told from the second save on.
    Require(menus > 0 || second == first, "what was saved, loaded and saved is the same");
    Require(menus == 0 || Reloaded(*project.Get(), second) == second, "menus that were saved alone stay the same");
}

} // namespace
} // namespace kv::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    kv::fuzz::LoadAndSave(kv::fuzz::MemoryFile(data, size));
    return 0;
}
