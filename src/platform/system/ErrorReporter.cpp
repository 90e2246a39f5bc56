#include "platform/system/ErrorReporter.h"

#include "platform/system/CriticalSection.h"
#include "platform/system/KeptErrors.h"

#include <cstdio>
#include <deque>

namespace kv {
namespace {

constexpr std::size_t kStackSize = 256;

struct Reporter {
    CriticalSection section;
    std::deque<std::string> lines;
    std::function<void(std::string_view)> report;
};

thread_local int keepers = 0;

Reporter& Shared()
{
    static Reporter reporter;
    return reporter;
}

std::string Line(ErrorPlace place, std::string_view text)
{
    std::string line(place.source);
    line += '(' + std::to_string(place.line) + "): *** Error ";
    line += text;
    return line += '\n';
}

} // namespace

std::string ResultText(HRESULT result)
{
    char code[16];
    std::snprintf(code, sizeof code, "0x%08X", static_cast<ULONG>(result));
    return code;
}

KeptErrors::KeptErrors()
{
    ++keepers;
}

KeptErrors::~KeptErrors()
{
    --keepers;
}

void ZXUClearErrorStack()
{
    if (keepers > 0) return;
    const SectionLock lock(Shared().section);
    Shared().lines.clear();
}

std::string ZXUErrStr(ErrorPlace place, std::string_view message)
{
    return Line(place, message);
}

std::string ZXUErrNullStr(ErrorPlace place, std::string_view parameter)
{
    return Line(place, "NULL = " + std::string(parameter));
}

std::string ZXUErrResultStr(ErrorPlace place, std::string_view expression, HRESULT result)
{
    return Line(place, ResultText(result) + " = " + std::string(expression));
}

void ZXUReportError(std::string_view line)
{
    std::function<void(std::string_view)> report;
    {
        const SectionLock lock(Shared().section);
        Shared().lines.emplace_back(line);
        if (Shared().lines.size() > kStackSize) Shared().lines.pop_front();
        report = Shared().report;
    }
    if (report) report(line);
}

std::vector<std::string> ZXUErrorStack()
{
    const SectionLock lock(Shared().section);
    return {Shared().lines.begin(), Shared().lines.end()};
}

void SetErrorReporter(std::function<void(std::string_view)> report)
{
    const SectionLock lock(Shared().section);
    Shared().report = std::move(report);
}

} // namespace kv
