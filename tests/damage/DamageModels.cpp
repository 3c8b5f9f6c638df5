// Damages good model files at random and counts how many of them end a program that looks at them.
//
//     orbisk_damage_models [--count N] [--seed S] [--keep FOLDER] [--meaning] FILE...
//
// With --meaning the form of the files is left alone, and their numbers and words are exchanged.
// The damage depends on the seed and the number of the try alone, so that a run can be repeated.
// Each damaged file is looked at by a process of its own (orbisk_look_at_model, beside this
// program); those that broke it are kept where --keep says. Exit code 1 where there were any.

#include "damage/Damage.h"
#include "damage/LookOutcome.h"
#include "support/TemporaryFolder.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace orbisk::test {

namespace {

namespace fs = std::filesystem;

struct Arguments {
    std::uint64_t count = 1000;
    std::uint64_t seed = 1;
    std::optional<fs::path> keep;
    bool isMeaning = false;
    std::vector<fs::path> files;
};

Arguments parse(int argc, char** argv) {
    Arguments result;
    for (int i = 1; i < argc; ++i) {
        const std::string word = argv[i];
        const bool hasValue = i + 1 < argc;
        if (word == "--count" && hasValue)
            result.count = std::strtoull(argv[++i], nullptr, 10);
        else if (word == "--seed" && hasValue)
            result.seed = std::strtoull(argv[++i], nullptr, 10);
        else if (word == "--meaning")
            result.isMeaning = true;
        else if (word == "--keep" && hasValue)
            result.keep = argv[++i];
        else
            result.files.emplace_back(word);
    }
    return result;
}

/// How many looks ended in which way, for each extension.
using Counts = std::map<std::string, std::map<std::string, int>>;

std::uint64_t damageSeed(const Arguments& arguments, std::uint64_t number) {
    constexpr std::uint64_t mostTries = 1'000'000;
    return arguments.seed * mostTries + number;
}

int run(const Arguments& arguments, const std::string& looker) {
    const TemporaryFolder folder;
    Counts counts;
    int broken = 0;
    for (std::uint64_t number = 0; number < arguments.count; ++number) {
        const fs::path& source = arguments.files[number % arguments.files.size()];
        const std::string extension = source.extension().string();
        const fs::path file = folder.path() / ("damaged" + extension);
        const auto damage = arguments.isMeaning ? damagedMeaning : damaged;
        writeFile(file, damage(readFile(source), damageSeed(arguments, number)));
        const LookOutcome outcome = lookAt(looker, file, folder.path() / "messages");
        ++counts[extension][outcome.text()];
        if (outcome.isSafe())
            continue;
        ++broken;
        std::printf("%s, try %llu: %s\n", source.filename().c_str(),
                    static_cast<unsigned long long>(number), outcome.text().c_str());
        if (arguments.keep)
            fs::copy_file(
                file, *arguments.keep / (std::to_string(number) + "_" + outcome.text() + extension),
                fs::copy_options::overwrite_existing);
    }
    for (const auto& [extension, outcomes] : counts) {
        std::printf("%s:", extension.c_str());
        for (const auto& [text, count] : outcomes)
            std::printf(" %s %d;", text.c_str(), count);
        std::printf("\n");
    }
    std::printf("%d of %llu ended the program\n", broken,
                static_cast<unsigned long long>(arguments.count));
    return broken == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}

} // namespace

} // namespace orbisk::test

int main(int argc, char** argv) {
    const orbisk::test::Arguments arguments = orbisk::test::parse(argc, argv);
    if (arguments.files.empty()) {
        std::fprintf(
            stderr,
            "usage: orbisk_damage_models [--count N] [--seed S] [--keep FOLDER] [--meaning] "
            "FILE...\n");
        return EXIT_FAILURE;
    }
    const std::filesystem::path self = std::filesystem::canonical("/proc/self/exe");
    return orbisk::test::run(arguments, self.parent_path() / "orbisk_look_at_model");
}
