#include "Bench.h"

#include <algorithm>
#include <stdexcept>

namespace kv::bench {
namespace {

double MedianOf(std::vector<double> values)
{
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

} // namespace

Medians InTurn(int rounds, const std::function<double()>& ours, const std::function<double()>& yardstick)
{
    std::vector<double> first;
    std::vector<double> second;
    for (int i = 0; i < rounds; ++i) {
        first.push_back(ours());
        second.push_back(yardstick());
    }
    return {MedianOf(std::move(first)), MedianOf(std::move(second))};
}

double Median(int rounds, const std::function<double()>& measure)
{
    std::vector<double> values;
    for (int i = 0; i < rounds; ++i)
        values.push_back(measure());
    return MedianOf(std::move(values));
}

void Must(HRESULT result)
{
    if (FAILED(result)) throw std::runtime_error("a call failed that the measurement stands on");
}

ComPtr<IKVProjectData> NewProject()
{
    ComPtr<IKVProjectData> project;
    Must(CreateInstance(CLSID_KVProjectData, project));
    return project;
}

} // namespace kv::bench
