#include "support/ModelFacts.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <map>

namespace orbisk::test {

namespace {

std::string trimmed(const std::string& text) {
    const char* blanks = " `";
    const auto first = text.find_first_not_of(blanks);
    if (first == std::string::npos)
        return {};
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

std::vector<std::string> cellsOf(const std::string& line) {
    std::vector<std::string> cells;
    std::size_t begin = 1;
    for (auto end = line.find('|', begin); end != std::string::npos; end = line.find('|', begin)) {
        cells.push_back(trimmed(line.substr(begin, end - begin)));
        begin = end + 1;
    }
    return cells;
}

/// One row under its table's headings; nothing where it tells of no readable model.
std::optional<ModelFacts> factsOf(const std::vector<std::string>& headings,
                                  const std::vector<std::string>& cells) {
    std::map<std::string, std::string> row;
    for (std::size_t i = 0; i < headings.size() && i < cells.size(); ++i)
        row[headings[i]] = cells[i];
    ModelFacts facts;
    if (row["osgconv outcome"] != "ok")
        return std::nullopt;
    if (std::sscanf(row["bounding sphere"].c_str(), "c %lf %lf %lf r %lf", &facts.center.x(),
                    &facts.center.y(), &facts.center.z(), &facts.radius) != 4)
        facts.radius = -1.0;
    const std::string& counts = row["counts"];
    if (const auto place = counts.find("tri "); place != std::string::npos)
        facts.triangles = std::strtoul(counts.c_str() + place + std::strlen("tri "), nullptr, 10);
    double area = 0.0;
    if (std::sscanf(row["area as loaded"].c_str(), "%lf", &area) == 1)
        facts.area = area;
    facts.file = row["file"];
    facts.bytes = std::strtol(row["bytes"].c_str(), nullptr, 10);
    return facts;
}

} // namespace

std::vector<ModelFacts> readModelFacts(const std::filesystem::path& folder) {
    std::vector<ModelFacts> result;
    std::vector<std::string> headings;
    std::ifstream table(folder / "MODELS.md");
    for (std::string line; std::getline(table, line);) {
        if (line.empty() || line[0] != '|')
            continue;
        const std::vector<std::string> cells = cellsOf(line);
        if (!cells.empty() && cells[0] == "file")
            headings = cells;
        else if (const auto facts = factsOf(headings, cells))
            result.push_back(*facts);
    }
    return result;
}

} // namespace orbisk::test
