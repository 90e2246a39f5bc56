// kv_bench [--strict] [GROUP…]: prints each figure beside its yardstick, the ratio, and the ratio that is wanted at
// most. Without a group, all of them. With --strict the exit code tells whether one was missed.

#include "Bench.h"
#include "platform/system/Registry.h"

#include <algorithm>
#include <cstdio>
#include <exception>
#include <stdexcept>

namespace {

struct Group {
    std::string_view name;
    void (*measure)(std::vector<kv::bench::Row>& rows);
};

constexpr Group kGroups[]{
    {"heap", kv::bench::MeasureHeap},       {"binding", kv::bench::MeasureLateBinding},
    {"puts", kv::bench::MeasureProperties}, {"events", kv::bench::MeasureEvents},
    {"undo", kv::bench::MeasureUndo},       {"documents", kv::bench::MeasureDocuments},
    {"dom", kv::bench::MeasureDom},         {"media", kv::bench::MeasureMedia},
    {"texts", kv::bench::MeasureTexts},     {"storyboards", kv::bench::MeasureStoryboards},
    {"effects", kv::bench::MeasureEffects}, {"frames", kv::bench::MeasureFrames},
    {"menus", kv::bench::MeasureMenus},     {"archives", kv::bench::MeasureArchives},
};

} // namespace

int main(int argc, char** argv)
{
    using namespace kv::bench;
    try {
        std::vector<std::string_view> chosen(argv + 1, argv + argc);
        const bool strict = std::erase(chosen, "--strict") > 0;
        for (const std::string_view name : chosen) {
            if (std::ranges::find(kGroups, name, &Group::name) == std::end(kGroups))
                throw std::runtime_error("no group is called " + std::string(name));
        }
        kv::Registry::UseMemory();
        Must(kv::RegisterServer(KV_BENCH_LIBRARY));
        Must(kv::RegisterServer(KV_BENCH_ENGINE));

        std::vector<Row> rows;
        for (const Group& group : kGroups) {
            if (chosen.empty() || std::ranges::find(chosen, group.name) != chosen.end()) group.measure(rows);
        }

        bool missed = false;
        std::printf("%-74s %10s %10s %8s %8s\n", "ours | yardstick", "ours", "yardstick", "ratio", "at most");
        for (const Row& row : rows) {
            const double figure = row.yardstick ? row.ours / *row.yardstick : row.ours;
            const bool counts = row.yardstick || row.unit == "bytes";
            const bool within = !counts || figure <= row.limit;
            missed = missed || !within;
            std::printf("%-74s %7.1f %-5s", row.name.c_str(), row.ours, row.unit.c_str());
            if (row.yardstick) {
                std::printf("%7.1f %-5s %5.2f", *row.yardstick, row.unit.c_str(), figure);
            } else {
                std::printf("%-19s", row.unit == "bytes" ? "" : "none on this machine");
            }
            std::printf(" %8.2f %s\n", row.limit, within ? "" : "missed");
        }
        return strict && missed ? 1 : 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "kv_bench: %s\n", error.what());
        return 1;
    }
}
