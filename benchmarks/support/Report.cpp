#include "support/Report.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <stdexcept>
#include <string_view>

namespace orbisk::bench {

namespace {

constexpr std::string_view filterOption = "--benchmark_filter=";
constexpr std::string_view resultsOption = "--results=";

/// What follows the option in this argument, if it is that option.
std::optional<std::string> valueOf(std::string_view option, std::string_view argument) {
    if (argument.substr(0, option.size()) != option)
        return std::nullopt;
    return std::string(argument.substr(option.size()));
}

double median(std::vector<double> figures) {
    const auto middle = figures.begin() + static_cast<std::ptrdiff_t>(figures.size() / 2);
    std::nth_element(figures.begin(), middle, figures.end());
    if (figures.size() % 2 == 1)
        return *middle;
    return (*middle + *std::max_element(figures.begin(), middle)) / 2.0;
}

double chosen(Choice choice, const std::vector<double>& figures) {
    switch (choice) {
    case Choice::Lowest:
        return *std::min_element(figures.begin(), figures.end());
    case Choice::Highest:
        return *std::max_element(figures.begin(), figures.end());
    default:
        return median(figures);
    }
}

std::string figure(double value, const std::string& unit) {
    char text[64];
    const int decimals = value < 10.0 ? 2 : value < 1000.0 ? 1 : 0;
    std::snprintf(text, sizeof text, "%.*f %s", decimals, value, unit.c_str());
    return text;
}

std::string ratioText(double ratio) {
    char text[32];
    std::snprintf(text, sizeof text, "%.3g", ratio);
    return text;
}

std::string wantedText(const std::optional<Wanted>& wanted) {
    if (!wanted)
        return "-";
    char text[64];
    std::snprintf(text, sizeof text, "%s %.6g",
                  wanted->bound == Wanted::Bound::AtMost ? "at most" : "at least", wanted->limit);
    return text;
}

std::string verdict(const std::optional<Wanted>& wanted, double figure) {
    if (!wanted)
        return "-";
    const bool isMet =
        wanted->bound == Wanted::Bound::AtMost ? figure <= wanted->limit : figure >= wanted->limit;
    return isMet ? "met" : "missed";
}

} // namespace

Samples interleave(int repetitions, const std::function<double()>& ours,
                   const std::function<double()>& theirs) {
    Samples samples;
    for (int i = 0; i < repetitions; ++i) {
        const bool oursFirst = i % 2 == 0;
        if (oursFirst)
            samples.ours.push_back(ours());
        samples.theirs.push_back(theirs());
        if (!oursFirst)
            samples.ours.push_back(ours());
    }
    return samples;
}

Report::Report(int argc, char** argv) {
    for (int i = 1; i < argc; ++i) {
        if (const auto filter = valueOf(filterOption, argv[i]))
            m_filter = std::regex(*filter);
        else if (const auto results = valueOf(resultsOption, argv[i]))
            m_results.open(*results, std::ios::app);
        else
            throw std::runtime_error(std::string("unknown option ") + argv[i]);
    }
}

int Report::run(int argc, char** argv, const std::function<void(Report&)>& measure) {
    try {
        Report report(argc, argv);
        measure(report);
        return EXIT_SUCCESS;
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "%s: %s\n", argv[0], failure.what());
        return EXIT_FAILURE;
    }
}

bool Report::wants(const std::string& name) const {
    return !m_filter || std::regex_search(name, *m_filter);
}

void Report::add(const Subject& subject, const Samples& samples) {
    const double ours = chosen(subject.choice, samples.ours);
    const double theirs = chosen(subject.choice, samples.theirs);
    const double ratio = ours / theirs;
    printRow({subject.name, figure(ours, subject.unit), figure(theirs, subject.unit),
              ratioText(ratio), wantedText(subject.wanted), verdict(subject.wanted, ratio)});
}

void Report::add(const Limit& limit, double value) {
    printRow({limit.name, figure(value, limit.unit), "-", "-",
              wantedText(limit.wanted) + " " + limit.unit, verdict(limit.wanted, value)});
}

void Report::printRow(const Row& row) {
    const auto print = [](const Row& fields) {
        std::printf("%-52s | %14s | %14s | %8s | %-18s | %s\n", fields[0].c_str(),
                    fields[1].c_str(), fields[2].c_str(), fields[3].c_str(), fields[4].c_str(),
                    fields[5].c_str());
        std::fflush(stdout);
    };
    if (!m_begun)
        print({"what", "ours", "against", "ratio", "wanted", ""});
    m_begun = true;
    print(row);
    for (const std::string& field : row)
        m_results << field << (&field == &row.back() ? '\n' : '\t');
    m_results.flush();
}

void Report::note(const std::string& text) {
    std::printf("  %s\n", text.c_str());
    std::fflush(stdout);
}

} // namespace orbisk::bench
