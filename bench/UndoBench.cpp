// Steps: recording, undo, redo.

#include "Bench.h"
#ifdef KV_BENCH_QT
#include "QtYardstick.h"
#endif

#include <array>
#include <malloc.h>

namespace kv::bench {
namespace {

constexpr int kRounds = 9;
constexpr int kSteps = 10'000;
constexpr double kNanoseconds = 1e9;
constexpr std::array<std::u16string_view, 2> kTexts{u"The harbour at dawn", u"The harbour at dusk"};

/// A project whose titles are edited in steps.
class EditedProject {
public:
    explicit EditedProject(int titles)
    {
        for (int i = 0; i < titles; ++i)
            Must(project->AddTitle(0, m_titles.emplace_back().Put()));
    }

    void Begin() { Must(project->BeginUndo(m_description.Get())); }
    void Edit(int title) { Must(At(title)->put_Label(m_labels[m_edits++ % 2].Get())); }
    void End() { Must(project->EndUndo(VARIANT_TRUE)); }
    void Step(int title)
    {
        Begin();
        Edit(title);
        End();
    }
    void Undo() { Must(project->UndoOperation()); }
    void Redo() { Must(project->RedoOperation()); }
    void Forget()
    {
        ComPtr<IOleUndoManager> manager;
        Must(project->GetUndoManager(manager.Put()));
        Must(manager->DiscardFrom(nullptr));
    }

    const ComPtr<IKVProjectData> project = NewProject();

private:
    ComPtr<IKVTitle>& At(int title) { return m_titles[static_cast<std::size_t>(title) % m_titles.size()]; }

    std::vector<ComPtr<IKVTitle>> m_titles;
    const std::array<Bstr, 2> m_labels{Bstr(kTexts[0]), Bstr(kTexts[1])};
    const Bstr m_description{u"rename"};
    std::size_t m_edits = 0;
};

template <class Body>
double PerStep(Body&& body)
{
    return kNanoseconds / kSteps * Time([&] {
               for (int i = 0; i < kSteps; ++i)
                   body(i);
           });
}

/// What recording, undo and redo of a step take, in nanoseconds.
using Times = std::array<double, 3>;

Times TimeOurs(EditedProject& edited)
{
    edited.Forget();
    return {PerStep([&](int) { edited.Step(0); }), PerStep([&](int) { edited.Undo(); }),
            PerStep([&](int) { edited.Redo(); })};
}

void MeasureSteps(std::vector<Row>& rows)
{
    constexpr std::array kNames{"title edit in a step of its own | Qt undo stack, push",
                                "its undo | Qt undo stack, undo", "its redo | Qt undo stack, redo"};
    EditedProject edited(1);
#ifdef KV_BENCH_QT
    QtUndoStack qt;
    const auto timeQt = [&]() -> Times {
        qt.Clear();
        return {PerStep([&](int i) { qt.Push(kTexts[static_cast<std::size_t>(i) % 2]); }),
                PerStep([&](int) { qt.Undo(); }), PerStep([&](int) { qt.Redo(); })};
    };
#endif
    for (std::size_t i = 0; i < kNames.size(); ++i) {
        const auto ours = [&] { return TimeOurs(edited)[i]; };
#ifdef KV_BENCH_QT
        const Medians medians = InTurn(kRounds, ours, [&] { return timeQt()[i]; });
        rows.push_back({kNames[i], "ns", medians.ours, medians.yardstick, 3});
#else
        rows.push_back({kNames[i], "ns", Median(kRounds, ours), {}, 3});
#endif
    }
}

/// Many edits in one step cost no more each than a few.
void MeasureLongStep(std::vector<Row>& rows)
{
    EditedProject edited(kSteps);
    const auto inStepsOf = [&](int size) {
        edited.Forget();
        return PerStep([&](int i) {
            if (i % size == 0) edited.Begin();
            edited.Edit(i);
            if (i % size == size - 1) edited.End();
        });
    };
    const Medians medians = InTurn(
        kRounds, [&] { return inStepsOf(kSteps); }, [&] { return inStepsOf(10); });
    rows.push_back({"edit in a step of 10,000 | edit in a step of 10", "ns", medians.ours, medians.yardstick, 1.2});
}

/// The size of the project makes no difference.
void MeasureLargeProject(std::vector<Row>& rows)
{
    constexpr int kEdited = 100;
    EditedProject large(100'000);
    EditedProject small(kEdited);
    const auto undo = [](EditedProject& edited, int stride) {
        edited.Forget();
        for (int i = 0; i < kSteps; ++i)
            edited.Step(i % kEdited * stride);
        return PerStep([&](int) { edited.Undo(); });
    };
    const Medians medians = InTurn(
        kRounds, [&] { return undo(large, 1000); }, [&] { return undo(small, 1); });
    rows.push_back({"undo of an edit, 100,000 titles | 100 titles", "ns", medians.ours, medians.yardstick, 1.2});
}

void MeasureUndoHeap(std::vector<Row>& rows)
{
    EditedProject edited(1);
    edited.Step(0);
    const auto before = mallinfo2();
    for (int i = 0; i < kSteps; ++i)
        edited.Step(0);
    const auto after = mallinfo2();
    const double bytes = static_cast<double>(after.uordblks + after.hblkhd - before.uordblks - before.hblkhd) / kSteps;
    rows.push_back({"heap of a title edit in a step of its own", "bytes", bytes, {}, 1024});
}

} // namespace

void MeasureUndo(std::vector<Row>& rows)
{
    MeasureUndoHeap(rows);
    MeasureSteps(rows);
    MeasureLongStep(rows);
    MeasureLargeProject(rows);
}

} // namespace kv::bench
