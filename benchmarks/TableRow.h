// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <string>
#include <vector>

/// What the work should take, in times of what the reference takes.
struct Aim {
    enum Bound { TimesAtMost, TimesFasterAtLeast };
    Bound bound;
    double value;
};

/**
 * A row of the table: a work of the library, what it is measured against, and what is aimed at. Its result is the worst
 * of its cases, each of which measures the same work on another input.
 */
class TableRow
{
public:
    using Work = std::function<void()>;

    TableRow(std::string work, std::string against, Aim aim);

    /**
     * @param work, reference do the same and return nothing; what they make, they hand to benchmark::DoNotOptimize(). A
     *                        call should take 100 us or more: the clock of the processor time is a call of the system.
     * @param scale           times of the work per time of the reference that count as equal, for works of unequal size
     */
    void addCase(const std::string &name, Work work, Work reference, double scale = 1.0);

private:
    friend int measureRows(int argc, char **argv, const std::vector<TableRow *> &rows);
    class Reporter;

    struct Case {
        std::string name;
        Work work;
        Work reference;
        double scale;
    };

    std::string _work;
    std::string _against;
    Aim _aim;
    std::vector<Case> _cases;
};

/**
 * The rest of a program's main(): measures every case and prints one row of the table, in Markdown, for each row; the
 * ratios of the cases go to standard error. Work and reference take turns, call by call, so that both see the same
 * machine; a case's ratio is the median of several repetitions.
 *
 * Takes the options of Google Benchmark; --benchmark_filter=TEXT leaves cases out.
 */
int measureRows(int argc, char **argv, const std::vector<TableRow *> &rows);
