// Prints each figure beside its yardstick, the ratio, and the ratio that is wanted at most.

#include "Bench.h"
#include "platform/system/Registry.h"

#include <cstdio>
#include <cstring>
#include <exception>

int main(int argc, char** argv)
{
    using namespace kv::bench;
    const bool strict = argc > 1 && std::strcmp(argv[1], "--strict") == 0;
    try {
        kv::Registry::UseMemory();
        Must(kv::RegisterServer(KV_BENCH_LIBRARY));
        Must(kv::RegisterServer(KV_BENCH_ENGINE));

        std::vector<Row> rows;
        MeasureHeap(rows);
        MeasureLateBinding(rows);
        MeasureProperties(rows);
        MeasureEvents(rows);
        MeasureUndo(rows);
        MeasureDocuments(rows);

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
