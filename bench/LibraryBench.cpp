// Late binding and memory.

#include "Bench.h"

#include <malloc.h>

namespace kv::bench {

void MeasureLateBinding(std::vector<Row>& rows)
{
    constexpr int kCalls = 200'000;
    constexpr int kRounds = 9;
    const auto project = NewProject();
    ComPtr<IKVEncodingParams> encoding = Query<IKVEncodingParams>(project);
    // The value stays the same, so that the calls themselves are measured and not the events.
    const auto late = [&] {
        VARIANT value;
        VariantInit(&value);
        value.vt = VT_I4;
        value.lVal = 8'000'000;
        DISPID put = DISPID_PROPERTYPUT;
        DISPPARAMS params{&value, &put, 1, 1};
        return 1e9 / kCalls * Time([&] {
                   for (int i = 0; i < kCalls; ++i) {
                       Must(encoding->Invoke(0x66, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_PROPERTYPUT, &params,
                                             nullptr, nullptr, nullptr));
                   }
               });
    };
    const auto direct = [&] {
        return 1e9 / kCalls * Time([&] {
                   for (int i = 0; i < kCalls; ++i)
                       Must(encoding->put_VideoBitrate(8'000'000));
               });
    };
    const Medians medians = InTurn(kRounds, late, direct);
    rows.push_back({"late-bound put by DISPID | direct call", "ns", medians.ours, medians.yardstick, 4});
}

void MeasureHeap(std::vector<Row>& rows)
{
    constexpr int kTitles = 10'000;
    const auto project = NewProject();
    Must(project->AddTitle(0, nullptr));
    const auto before = mallinfo2();
    for (int i = 0; i < kTitles; ++i)
        Must(project->AddTitle(0, nullptr));
    const auto after = mallinfo2();
    const double bytes = static_cast<double>(after.uordblks + after.hblkhd - before.uordblks - before.hblkhd) / kTitles;
    rows.push_back({"heap of a title with encoding parameters and empty command list", "bytes", bytes, {}, 1536});
}

} // namespace kv::bench
