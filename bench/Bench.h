#pragma once
// Measures something of ours against a yardstick in the same run.

#include "KVProjectData/KVProjectData.h"
#include "platform/com/Activation.h"
#include "platform/com/ComPtr.h"

#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace kv::bench {

/// Seconds that a body took.
template <class Body>
double Time(Body&& body)
{
    const auto start = std::chrono::steady_clock::now();
    body();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

/// One figure of ours beside its yardstick, in the same unit.
struct Row {
    std::string name;
    /// What the figures count, such as "ns".
    std::string unit;
    double ours;
    /// Empty where this machine has no yardstick.
    std::optional<double> yardstick;
    /// The ratio that is wanted at most; of figures without a yardstick, the figure itself.
    double limit;
};

/// Runs both in turn, one after the other, and gives the medians.
struct Medians {
    double ours;
    double yardstick;
};
Medians InTurn(int rounds, const std::function<double()>& ours, const std::function<double()>& yardstick);
double Median(int rounds, const std::function<double()>& measure);

/// Throws when a call failed that a measurement stands on.
void Must(HRESULT result);

ComPtr<IKVProjectData> NewProject();

/// A sink that counts events and can wait for a number of them.
class CountingSink;

void MeasureProperties(std::vector<Row>& rows);
void MeasureEvents(std::vector<Row>& rows);
void MeasureLateBinding(std::vector<Row>& rows);
void MeasureHeap(std::vector<Row>& rows);
void MeasureUndo(std::vector<Row>& rows);
void MeasureDocuments(std::vector<Row>& rows);
void MeasureDom(std::vector<Row>& rows);
void MeasureEffects(std::vector<Row>& rows);
void MeasureMedia(std::vector<Row>& rows);
void MeasureTexts(std::vector<Row>& rows);
void MeasureStoryboards(std::vector<Row>& rows);
void MeasureFrames(std::vector<Row>& rows);
void MeasureMenus(std::vector<Row>& rows);
void MeasureArchives(std::vector<Row>& rows);

} // namespace kv::bench
