// SPDX-License-Identifier: MIT
#include "TableRow.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <malloc.h>
#include <map>
#include <sys/resource.h>
#include <utility>

namespace {

double secondsOf(const timeval &time)
{
    return double(time.tv_sec) + 1e-6 * double(time.tv_usec);
}

/// Processor time of this thread, and of the programs that it has waited for; a crowded machine prolongs it less than
/// the time of a clock.
double processorSeconds()
{
    timespec own;
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &own);
    rusage children;
    getrusage(RUSAGE_CHILDREN, &children);
    return double(own.tv_sec) + 1e-9 * double(own.tv_nsec) + secondsOf(children.ru_utime) +
           secondsOf(children.ru_stime);
}

double secondsOf(const TableRow::Work &work)
{
    const double begin = processorSeconds();
    work();
    return processorSeconds() - begin;
}

/// Otherwise the one that frees more pays the kernel for new pages with every call.
void keepFreedMemory()
{
    mallopt(M_TRIM_THRESHOLD, 1 << 30);
    mallopt(M_MMAP_THRESHOLD, 1 << 25);
}

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

std::string text(const char *format, double value)
{
    char buffer[64];
    std::snprintf(buffer, sizeof buffer, format, value);
    return buffer;
}

} // namespace

/// Keeps what the repetitions of each case came to.
class TableRow::Reporter : public benchmark::BenchmarkReporter
{
public:
    bool ReportContext(const Context &) override { return true; }

    void ReportRuns(const std::vector<Run> &runs) override
    {
        for (const Run &run : runs)
            if (run.run_type == Run::RT_Iteration)
                for (const char *quantity : {"ratio", "work", "reference"})
                    _results[run.run_name.function_name][quantity].push_back(run.counters.at(quantity));
    }

    void print(const TableRow &row)
    {
        std::vector<double> ratios;
        for (const Case &each : row._cases) {
            const auto found = _results.find(each.name);
            if (found == _results.end())
                continue;
            ratios.push_back(median(found->second["ratio"]));
            std::fprintf(stderr, "%-60s %8.3f times  (%.1f us against %.1f us)\n", each.name.c_str(), ratios.back(),
                         1e6 * median(found->second["work"]), 1e6 * median(found->second["reference"]));
        }
        if (!ratios.empty())
            printWorst(row, *std::max_element(ratios.begin(), ratios.end()));
    }

private:
    static void printWorst(const TableRow &row, double ratio)
    {
        const bool isFaster = row._aim.bound == Aim::TimesFasterAtLeast;
        const std::string aim = text(isFaster ? "%g times faster" : "%g times", row._aim.value);
        const std::string measured = text("%.2f", isFaster ? 1.0 / ratio : ratio);
        std::printf("| %s | %s | %s | %s |\n", row._work.c_str(), row._against.c_str(), aim.c_str(), measured.c_str());
    }

    std::map<std::string, std::map<std::string, std::vector<double>>> _results; ///< by name of the case
};

TableRow::TableRow(std::string work, std::string against, Aim aim)
    : _work(std::move(work)), _against(std::move(against)), _aim(aim)
{
}

void TableRow::addCase(const std::string &name, Work work, Work reference, double scale)
{
    _cases.push_back({name, std::move(work), std::move(reference), scale});
}

int measureRows(int argc, char **argv, const std::vector<TableRow *> &rows)
{
    std::string repetitions = "--benchmark_repetitions=9";
    std::string shortest = "--benchmark_min_time=0.05";
    std::vector<char *> arguments(argv, argv + argc);
    arguments.insert(arguments.begin() + 1, {&repetitions[0], &shortest[0]}); // in front: the caller's own come later
    int count = int(arguments.size());
    benchmark::Initialize(&count, arguments.data());
    if (benchmark::ReportUnrecognizedArguments(count, arguments.data()))
        return 2;

    keepFreedMemory();
    for (const TableRow *row : rows)
        for (const TableRow::Case &each : row->_cases)
            benchmark::RegisterBenchmark(each.name.c_str(), [&each](benchmark::State &state) {
                double work = 0.0;
                double reference = 0.0;
                for (auto _ : state) {
                    const double workSeconds = secondsOf(each.work);
                    const double referenceSeconds = secondsOf(each.reference);
                    work += workSeconds;
                    reference += referenceSeconds;
                    state.SetIterationTime(workSeconds + referenceSeconds);
                }
                state.counters["ratio"] = work / each.scale / reference;
                state.counters["work"] = work / double(state.iterations());
                state.counters["reference"] = reference / double(state.iterations());
            })->UseManualTime();
    TableRow::Reporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    for (const TableRow *row : rows)
        reporter.print(*row);
    return 0;
}
