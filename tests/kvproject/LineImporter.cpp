// An importer of another maker: the lines of a file become titles.

#include "KVProjectData/IKVProjectData.h"
#include "KVProjectData/IKVProjectImport.h"
#include "KVProjectData/Identities.h"
#include "platform/com/EntryPoints.h"
#include "platform/system/Paths.h"

#include <fstream>

namespace kv::test {
namespace {

constexpr CLSID kLineImporter = "7c1f0d52-6a3e-4b94-8e0b-4d2a9c6f1b37"_guid;

class LineImporter final : public Object<IKVProjectImport> {
public:
    explicit LineImporter(IUnknown* outer) : Object(outer) {}

    HRESULT IsLoadable(BSTR bstrFileName, LONG* pbIsLoadable) override
    {
        *pbIsLoadable = View(bstrFileName).ends_with(u".lines") ? 1 : 0;
        return S_OK;
    }

    HRESULT Import(BSTR bstrFileName, IUnknown* pUnkProjectData, BSTR, BSTR) override
    {
        return Guarded([&] {
            const auto project = Query<IKVProjectData>(pUnkProjectData);
            std::ifstream stream(ToHostPath(View(bstrFileName)));
            for (std::string line; std::getline(stream, line);) {
                ComPtr<IKVTitle> title;
                ThrowIfFailed(project->AddTitle(0, title.Put()));
                ThrowIfFailed(title->put_Label(Bstr(ToUtf16(line)).Get()));
            }
            return S_OK;
        });
    }
};

constexpr ServerClass kClasses[]{{&kLineImporter, &CreateObject<LineImporter>, u"KVTest.LineImporter.1",
                                  u"KVTest.LineImporter", u"Importer of Lines", &CATID_KVProjectImport}};
constexpr ServerDescription kServer{.classes = kClasses};

} // namespace
} // namespace kv::test

KV_SERVER_ENTRY_POINTS(kv::test::kServer)
