#pragma once

#include <functional>
#include <optional>
#include <regex>
#include <string>
#include <vector>

namespace orbisk::bench {

/// What ours divided by the other side's is wanted to be.
struct Wanted {
    enum class Bound { AtMost, AtLeast };
    Bound bound;
    double ratio;
};

/// One comparison: what is measured, in which unit, and what is wanted of it, if anything.
struct Subject {
    std::string name;
    std::string unit;
    std::optional<Wanted> wanted;
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

/// The middle one of `figures`; not a number without any.
double median(std::vector<double> figures);

/// Prints the comparisons of one program as a table, as they come.
class Report {
public:
    /// Takes the option `--benchmark_filter=REGEX`: subjects it does not find are left out. Ends
    /// the program where it is no regular expression.
    Report(int argc, char** argv);

    /// Whether a subject of this name is to be measured.
    bool wants(const std::string& name) const;

    /// Prints a row: the medians of both sides and their ratio.
    void add(const Subject& subject, const Samples& samples);

    /// Prints a remark below the rows so far.
    static void note(const std::string& text);

private:
    std::optional<std::regex> m_filter;
    bool m_begun = false;
};

} // namespace orbisk::bench
