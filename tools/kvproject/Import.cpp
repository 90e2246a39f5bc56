#include "Import.h"

#include "Failure.h"
#include "Interruption.h"
#include "KVProjectData/IKVProjectImport.h"
#include "KVProjectData/Identities.h"
#include "ProgressBar.h"
#include "Text.h"
#include "platform/automation/Variant.h"
#include "platform/com/Activation.h"
#include "platform/com/Object.h"
#include "platform/system/Registry.h"

#include <filesystem>
#include <mutex>

namespace kvproject {
namespace {

using kv::ComPtr;
using kv::Query;

std::string TextOf(BSTR text)
{
    return text ? kv::ToUtf8(kv::View(text)) : std::string();
}

/// Hears of an import until it is over; importers may call from any thread, and too late.
class ImportSink final : public kv::Object<IKVProjectImportEvents> {
public:
    HRESULT ReportProgress(LONG lCurrentStep, LONG lTotalSteps, LONG, LONG lTotalPct) override
    {
        const std::lock_guard lock(m_mutex);
        if (m_over) return E_UNEXPECTED;
        constexpr double kAll = 100.0;
        m_bar.Show(static_cast<double>(lTotalPct) / kAll,
                   "step " + std::to_string(lCurrentStep) + " of " + std::to_string(lTotalSteps));
        return Continue();
    }

    HRESULT ReportErrorMsg(HRESULT hError, BSTR bstrMsg) override { return Tell(hError, TextOf(bstrMsg)); }

    HRESULT ReportError(HRESULT hError, VARIANT varContext) override
    {
        kv::Variant text;
        const bool isText = SUCCEEDED(VariantChangeType(&text, &varContext, 0, VT_BSTR));
        return Tell(hError, isText ? TextOf(text.bstrVal) : std::string());
    }

    /// Hears nothing from now on. How many errors were told.
    std::size_t End()
    {
        const std::lock_guard lock(m_mutex);
        m_over = true;
        m_bar.Clear();
        return m_errors;
    }

private:
    static HRESULT Continue() { return Interruption::Asked() ? E_ABORT : S_OK; }

    HRESULT Tell(HRESULT error, const std::string& text)
    {
        const std::lock_guard lock(m_mutex);
        if (m_over) return E_UNEXPECTED;
        m_bar.Clear();
        ++m_errors;
        TellFailure(text.empty() ? Describe(error) : text + ": " + Describe(error));
        return Continue();
    }

    std::mutex m_mutex;
    ProgressBar m_bar;
    std::size_t m_errors = 0;
    bool m_over = false;
};

/// The connection of a sink to an importer that tells anything.
class Connection {
public:
    Connection(IKVProjectImport& importer, ImportSink& sink)
    {
        const auto container = Query<IConnectionPointContainer>(&importer);
        if (container && SUCCEEDED(container->FindConnectionPoint(IKVProjectImportEvents::IID, m_point.Put())))
            m_point->Advise(&sink, &m_cookie);
    }
    ~Connection()
    {
        if (m_cookie != 0) m_point->Unadvise(m_cookie);
    }
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

private:
    ComPtr<IConnectionPoint> m_point;
    DWORD m_cookie = 0;
};

struct Importer {
    ComPtr<IKVProjectImport> object;
    std::string name;
};

std::string NameOf(const CLSID& clsid)
{
    const std::u16string identity = kv::GuidText(clsid);
    const std::u16string name = kv::Registry::QueryText(kv::Hive::ClassesRoot, u"CLSID\\" + identity, {});
    return kv::ToUtf8(name.empty() ? identity : name);
}

/// Why no importer takes a file or a folder.
std::string FaultOf(const std::string& source, bool anyImporter)
{
    std::error_code error;
    if (!anyImporter) return "there is no importer";
    if (!std::filesystem::is_empty(source, error)) return "no importer takes it";
    return std::filesystem::is_directory(source, error) ? "the folder is empty" : "the file is empty";
}

Importer FindImporter(const std::string& source)
{
    const auto classes = kv::ClassesOfCategory(CATID_KVProjectImport);
    for (const CLSID& clsid : classes) {
        ComPtr<IKVProjectImport> importer;
        LONG loadable = 0;
        const bool takes = SUCCEEDED(kv::CreateInstance(clsid, importer)) &&
                           SUCCEEDED(importer->IsLoadable(kv::Bstr(kv::ToUtf16(source)).Get(), &loadable)) &&
                           loadable != 0;
        if (takes) return {std::move(importer), NameOf(clsid)};
    }
    throw Failure("cannot import " + source + ": " + FaultOf(source, !classes.empty()));
}

} // namespace

int Import(IKVProjectData& project, const std::string& source, std::ostream& out)
{
    const Importer importer = FindImporter(source);
    out << Shown(source) << ": imported by " << Shown(importer.name) << '\n' << std::flush;
    const Interruption interruption;
    const auto sink = kv::Make<ImportSink>();
    const Connection connection(*importer.object, *sink);
    const HRESULT result = importer.object->Import(kv::Bstr(kv::ToUtf16(source)).Get(), &project, nullptr, nullptr);
    const std::size_t errors = sink->End();
    if (Interruption::Asked()) {
        TellFailure("interrupted; nothing is saved");
        return Interruption::ExitCode();
    }
    Require(result, "cannot import " + source);
    if (result == S_FALSE) {
        throw Failure("cannot import " + source + ": " +
                      (errors == 0 ? "there is nothing in it" : "nothing in it can be imported"));
    }
    return errors == 0 ? 0 : kFault;
}

} // namespace kvproject
