#include "platform/system/MessageBox.h"

#include "platform/automation/Bstr.h"
#include "platform/system/CriticalSection.h"

#include <cstdio>

namespace kv {
namespace {

using Show = std::function<void(std::u16string_view, std::u16string_view)>;

struct Hook {
    CriticalSection section;
    Show show;
};

Hook& Shared()
{
    static Hook hook;
    return hook;
}

} // namespace

void ShowMessageBox(std::u16string_view text, std::u16string_view caption)
{
    Show show;
    {
        const SectionLock lock(Shared().section);
        show = Shared().show;
    }
    if (show) {
        show(text, caption);
    } else {
        std::fprintf(stderr, "%s: %s\n", ToUtf8(caption).c_str(), ToUtf8(text).c_str());
    }
}

void SetMessageBoxHook(Show show)
{
    const SectionLock lock(Shared().section);
    Shared().show = std::move(show);
}

} // namespace kv
