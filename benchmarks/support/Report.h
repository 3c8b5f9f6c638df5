#pragma once

#include <array>
#include <fstream>
#include <functional>
#include <optional>
#include <regex>
#include <string>
#include <vector>

namespace orbisk::bench {

/// What a figure, most often ours divided by the other side's, is wanted to be.
struct Wanted {
    enum class Bound { AtMost, AtLeast };
    Bound bound;
    double limit;
};

/// Which of a side's figures stands for it. Where the same work is done each time, whatever else
/// the machine does can only add to it, and the fastest tells most.
enum class Choice { Median, Lowest, Highest };

/// One comparison: what is measured, in which unit, and what is wanted of it, if anything.
struct Subject {
    std::string name;
    std::string unit;
    Choice choice;
    std::optional<Wanted> wanted;
};

/// A figure that has nothing to stand against: what is measured, in which unit, and its limit.
struct Limit {
    std::string name;
    std::string unit;
    Wanted wanted;
};

/// The figures of both sides, one pair a repetition.
struct Samples {
    std::vector<double> ours;
    std::vector<double> theirs;
};

/// Takes figures of both sides in turn, so that whatever else the machine does meets both alike;
/// which side begins alternates.
Samples interleave(int repetitions, const std::function<double()>& ours,
                   const std::function<double()>& theirs);

/// Prints the comparisons of one program as a table, as they come. With the option
/// `--results=FILE` each row is added to that file, too, its fields with tabs between them: what,
/// ours, against, ratio, wanted, and "met", "missed" or "-".
class Report {
public:
    /// What a benchmark's `main` does: runs `measure` and returns the exit code. With the option
    /// `--benchmark_filter=REGEX` subjects that it does not find are left out. A failure of any
    /// kind is told.
    static int run(int argc, char** argv, const std::function<void(Report&)>& measure);

    /// Whether a subject of this name is to be measured.
    bool wants(const std::string& name) const;

    /// Prints a row: the chosen figure of each side and the ratio of the two.
    void add(const Subject& subject, const Samples& samples);

    /// Prints a row: a figure and its limit.
    void add(const Limit& limit, double figure);

    /// Prints a remark below the rows so far.
    static void note(const std::string& text);

private:
    using Row = std::array<std::string, 6>;

    Report(int argc, char** argv);

    void printRow(const Row& row);

    std::optional<std::regex> m_filter;
    std::ofstream m_results;
    bool m_begun = false;
};

} // namespace orbisk::bench
