#include "Archive.h"

#include "Failure.h"
#include "Interruption.h"
#include "KVProjectData/IKVProjectArchive.h"
#include "ProgressBar.h"
#include "Text.h"
#include "platform/com/Object.h"

#include <array>
#include <chrono>
#include <string_view>
#include <vector>

namespace kvproject {
namespace {

struct File {
    std::string source;
    std::string copy;
    ArchivedFile outcome;
    HRESULT result;
    LONGLONG bytes;
};

/// Hears what becomes of each file.
class ArchiveSink final : public kv::Object<IKVArchiveEvents> {
public:
    HRESULT OnStart(LONG, LONGLONG llBytes) override
    {
        m_all = static_cast<double>(llBytes);
        m_begin = Clock::now();
        return Continue();
    }

    HRESULT OnProgress(BSTR, LONGLONG llBytes) override
    {
        const auto done = static_cast<double>(llBytes);
        const double seconds = std::chrono::duration<double>(Clock::now() - m_begin).count();
        m_bar.Show(m_all > 0.0 ? done / m_all : 1.0, BytesText(done) + " of " + BytesText(m_all) + ", " +
                                                         BytesText(seconds > 0.0 ? done / seconds : 0.0) + "/s");
        return Continue();
    }

    HRESULT OnFile(BSTR bstrSource, BSTR bstrCopy, ArchivedFile outcome, HRESULT hResult, LONGLONG llBytes) override
    {
        files.push_back({kv::ToUtf8(kv::View(bstrSource)), kv::ToUtf8(kv::View(bstrCopy)), outcome, hResult, llBytes});
        return Continue();
    }

    void EndBar() { m_bar.Clear(); }

    std::vector<File> files;

private:
    using Clock = std::chrono::steady_clock;

    static HRESULT Continue() { return Interruption::Asked() ? E_ABORT : S_OK; }

    ProgressBar m_bar;
    double m_all = 0.0;
    Clock::time_point m_begin;
};

/// A line for a file that is not in the archive; empty for one that is.
std::string FaultOf(const File& file)
{
    const std::string& name = file.source;
    switch (file.outcome) {
    case ArchivedFile_Missing:
        return "missing: " + name;
    case ArchivedFile_NoFile:
        return "kept: " + name + ": no regular file";
    case ArchivedFile_NameTaken:
        return "kept: " + name + ": another file has the name " + file.copy;
    case ArchivedFile_NotRead:
        return "kept: " + name + ": " + Describe(file.result);
    default:
        return {};
    }
}

/// What became of the files, in one sentence.
class Summary {
public:
    void Add(const File& file)
    {
        ++m_counts.at(static_cast<std::size_t>(file.outcome));
        if (file.outcome == ArchivedFile_Copied) m_bytes += static_cast<double>(file.bytes);
    }

    std::string Text(bool planned) const
    {
        const std::size_t kept =
            Count(ArchivedFile_NoFile) + Count(ArchivedFile_NameTaken) + Count(ArchivedFile_NotRead);
        return std::to_string(Count(ArchivedFile_Copied)) + (planned ? " to copy (" : " copied (") +
               BytesText(m_bytes) + "), " + std::to_string(Count(ArchivedFile_InPlace)) + " in place, " +
               std::to_string(kept) + " kept where they are, " + std::to_string(Count(ArchivedFile_Missing)) +
               " missing";
    }

private:
    std::size_t Count(ArchivedFile outcome) const { return m_counts.at(static_cast<std::size_t>(outcome)); }

    std::array<std::size_t, 6> m_counts{};
    double m_bytes = 0.0;
};

} // namespace

int Archive(const Session& session, const std::string& target, bool planned, std::ostream& out)
{
    const Interruption interruption;
    const auto sink = kv::Make<ArchiveSink>();
    const HRESULT result = session.Archive(target, planned, *sink);
    sink->EndBar();
    if (FAILED(result) && Interruption::Asked()) {
        TellFailure("interrupted; nothing is archived");
        return Interruption::ExitCode();
    }
    Require(result, "cannot archive " + target);
    Summary summary;
    bool complete = true;
    for (const File& file : sink->files) {
        summary.Add(file);
        const std::string fault = FaultOf(file);
        if (!fault.empty()) {
            TellFailure(fault);
            complete = false;
        } else if (planned && file.outcome == ArchivedFile_Copied) {
            out << "to copy: " << Shown(file.source) << " to " << Shown(file.copy) << '\n';
        }
    }
    out << Shown(target) << ": " << summary.Text(planned) << '\n';
    return complete ? 0 : kFault;
}

} // namespace kvproject
