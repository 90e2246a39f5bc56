#include "platform/automation/ErrorInfo.h"

namespace kv {
namespace {

struct ErrorInfo {
    EXCEPINFO record{};
    bool set = false;

    ~ErrorInfo() { FreeExceptionInfo(record); }
};

ErrorInfo& ThreadErrorInfo()
{
    thread_local ErrorInfo info;
    return info;
}

} // namespace

void FreeExceptionInfo(EXCEPINFO& exception)
{
    SysFreeString(exception.bstrSource);
    SysFreeString(exception.bstrDescription);
    exception = {};
}

void SetThreadErrorInfo(EXCEPINFO& exception)
{
    ErrorInfo& info = ThreadErrorInfo();
    FreeExceptionInfo(info.record);
    info.record = std::exchange(exception, {});
    info.set = true;
}

HRESULT TakeThreadErrorInfo(EXCEPINFO* exception)
{
    if (!exception) return E_POINTER;
    ErrorInfo& info = ThreadErrorInfo();
    *exception = std::exchange(info.record, {});
    return std::exchange(info.set, false) ? S_OK : S_FALSE;
}

} // namespace kv
