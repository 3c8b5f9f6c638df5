#include "support/Report.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string_view>

namespace orbisk::bench {

namespace {

constexpr std::string_view filterOption = "--benchmark_filter=";

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

bool isMet(const Wanted& wanted, double ratio) {
    return wanted.bound == Wanted::Bound::AtMost ? ratio <= wanted.ratio : ratio >= wanted.ratio;
}

std::string wantedText(const std::optional<Wanted>& wanted, double ratio) {
    if (!wanted)
        return "-";
    char text[64];
    std::snprintf(text, sizeof text, "%s %.3g, %s",
                  wanted->bound == Wanted::Bound::AtMost ? "at most" : "at least", wanted->ratio,
                  isMet(*wanted, ratio) ? "met" : "missed");
    return text;
}

void printRow(const char* what, const char* ours, const char* against, const char* ratio,
              const char* wanted) {
    std::printf("%-40s | %12s | %12s | %6s | %s\n", what, ours, against, ratio, wanted);
    std::fflush(stdout);
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
        const std::string_view argument = argv[i];
        if (argument.substr(0, filterOption.size()) != filterOption)
            continue;
        m_filter = std::regex(std::string(argument.substr(filterOption.size())));
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
    if (!m_begun)
        printRow("what", "ours", "against", "ratio", "wanted");
    m_begun = true;
    const double ours = chosen(subject.choice, samples.ours);
    const double theirs = chosen(subject.choice, samples.theirs);
    const double ratio = ours / theirs;
    char ratioText[32];
    std::snprintf(ratioText, sizeof ratioText, "%.3g", ratio);
    printRow(subject.name.c_str(), figure(ours, subject.unit).c_str(),
             figure(theirs, subject.unit).c_str(), ratioText,
             wantedText(subject.wanted, ratio).c_str());
}

void Report::note(const std::string& text) {
    std::printf("  %s\n", text.c_str());
    std::fflush(stdout);
}

} // namespace orbisk::bench
