#include "measure/VertexRows.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <random>

namespace orbisk::test {

namespace {

using Item = std::vector<osg::Vec3d>;
using Items = VertexRows::Items;
using Row = std::vector<std::string>;

constexpr VertexColumn columns[] = {VertexColumn::Id, VertexColumn::X,      VertexColumn::Y,
                                    VertexColumn::Z,  VertexColumn::Length, VertexColumn::Total};

std::vector<Row> shown(const VertexRows& rows) {
    std::vector<Row> texts;
    for (std::size_t row = 0; row < rows.count(); ++row) {
        texts.emplace_back();
        for (const VertexColumn column : columns) {
            texts.back().emplace_back();
            rows.appendText(texts.back().back(), row, column);
        }
    }
    return texts;
}

std::string printed(double value) {
    char text[400];
    std::snprintf(text, sizeof text, "%.3f", value);
    return text;
}

/// The same, written the long way.
std::vector<Row> expected(const Items& items, double (*total)(const Item&)) {
    std::vector<Row> rows;
    for (const Item& item : items)
        for (std::size_t k = 0; k < item.size(); ++k)
            rows.push_back({std::to_string(k + 1), printed(item[k].x()), printed(item[k].y()),
                            printed(item[k].z()),
                            printed(k == 0 ? 0.0 : (item[k] - item[k - 1]).length()),
                            k == 0 ? printed(total(item)) : ""});
    return rows;
}

double lengthOf(const Item& line) {
    double sum = 0.0;
    for (std::size_t k = 1; k < line.size(); ++k)
        sum += (line[k] - line[k - 1]).length();
    return sum;
}

/// Depends on every vertex and on their order, as an area does.
double mixtureOf(const Item& item) {
    double sum = 0.0;
    for (std::size_t k = 0; k < item.size(); ++k)
        sum += item[k].x() * static_cast<double>(k + 1) + item[0].y();
    return sum;
}

void computeMixture(const Item& item, ItemTotal& total) {
    total.value = mixtureOf(item);
}

osg::Vec3d anyVertex(std::mt19937& random) {
    std::uniform_real_distribution<double> anywhere(-1000.0, 1000.0);
    return {anywhere(random), anywhere(random), anywhere(random)};
}

} // namespace

TEST(VertexRowsTest, VerticesFollowEachOther) {
    const Items lines{{{0, 0, 0}, {3, 4, 0}, {3, 4, 2}}, {{1, 2, 3}, {1, 2, 5}}};
    const VertexRows rows(lines, extendLength);
    EXPECT_EQ(shown(rows), (std::vector<Row>{
                               {"1", "0.000", "0.000", "0.000", "0.000", "7.000"},
                               {"2", "3.000", "4.000", "0.000", "5.000", ""},
                               {"3", "3.000", "4.000", "2.000", "2.000", ""},
                               {"1", "1.000", "2.000", "3.000", "0.000", "2.000"},
                               {"2", "1.000", "2.000", "5.000", "2.000", ""},
                           }));
    EXPECT_EQ(rows.rowsOf(0), 3u);
    EXPECT_EQ(rows.rowsOf(1), 2u);
}

TEST(VertexRowsTest, LineOfOneVertexHasTheLengthsZero) {
    const Items lines{{{1, 2, 3}}};
    const VertexRows rows(lines, extendLength);
    EXPECT_EQ(shown(rows), (std::vector<Row>{{"1", "1.000", "2.000", "3.000", "0.000", "0.000"}}));
    EXPECT_EQ(rows.rowsOf(0), 1u);
}

TEST(VertexRowsTest, ItemsWithoutVerticesTakeNoRow) {
    const Items lines{{}, {{1, 2, 3}}, {}, {}, {{4, 5, 6}}, {}};
    const VertexRows rows(lines, extendLength);
    ASSERT_EQ(rows.count(), 2u);
    EXPECT_EQ(rows.at(0)->item, 1u);
    EXPECT_EQ(rows.at(1)->item, 4u);
    EXPECT_EQ(rows.rowsOf(1), 1u);
    EXPECT_EQ(shown(rows), expected(lines, lengthOf));
}

TEST(VertexRowsTest, NoItemsHaveNoRows) {
    const Items lines;
    VertexRows rows(lines, extendLength);
    EXPECT_EQ(rows.count(), 0u);
    EXPECT_FALSE(rows.at(0));
    rows.followLast();
    rows.rebuild();
    EXPECT_EQ(rows.count(), 0u);
}

TEST(VertexRowsTest, RowBeyondTheLastHasNoVertex) {
    const Items lines{{{1, 2, 3}}};
    const VertexRows rows(lines, extendLength);
    EXPECT_TRUE(rows.at(0));
    EXPECT_FALSE(rows.at(1));
    std::string text;
    rows.appendText(text, 1, VertexColumn::X);
    EXPECT_EQ(text, "");
}

TEST(VertexRowsTest, TotalIsComputedWhenAskedForAndOnceOnly) {
    const Items areas{{{1, 2, 3}, {4, 5, 6}}, {{1, 2, 3}}};
    int computations = 0;
    const VertexRows rows(areas, [&computations](const Item& item, ItemTotal& total) {
        ++computations;
        computeMixture(item, total);
    });
    EXPECT_EQ(computations, 0);
    std::string text;
    rows.appendText(text, 1, VertexColumn::Total);
    rows.appendText(text, 0, VertexColumn::Length);
    EXPECT_EQ(computations, 0);
    shown(rows);
    shown(rows);
    EXPECT_EQ(computations, 2);
}

TEST(VertexRowsTest, GrowingLineAddsOnlyItsNewSegments) {
    Items lines{{{0, 0, 0}}};
    std::size_t read = 0;
    VertexRows rows(lines, [&read](const Item& line, ItemTotal& total) {
        read += line.size() - total.vertices;
        extendLength(line, total);
    });
    for (int i = 1; i <= 100; ++i) {
        lines[0].emplace_back(i, 0, 0);
        rows.followLast();
        std::string text;
        rows.appendText(text, 0, VertexColumn::Total);
        EXPECT_EQ(text, printed(i));
    }
    EXPECT_EQ(read, 101u);
}

TEST(VertexRowsTest, ShrunkItemForgetsItsTotal) {
    Items lines{{{0, 0, 0}, {1, 0, 0}, {5, 0, 0}}};
    VertexRows rows(lines, extendLength);
    shown(rows);
    lines[0].pop_back();
    rows.followLast();
    lines[0].emplace_back(2, 0, 0);
    rows.followLast();
    EXPECT_EQ(shown(rows), expected(lines, lengthOf));
}

TEST(VertexRowsTest, RebuildForgetsTotals) {
    Items lines{{{0, 0, 0}, {1, 0, 0}}};
    VertexRows rows(lines, extendLength);
    shown(rows);
    lines[0][1].x() = 8.0;
    rows.rebuild();
    EXPECT_EQ(shown(rows), expected(lines, lengthOf));
}

TEST(VertexRowsTest, UnnoticedLossHasNoText) {
    Items lines{{{0, 0, 0}, {1, 0, 0}}, {{2, 0, 0}}};
    VertexRows rows(lines, extendLength);
    shown(rows);
    lines[0].pop_back();
    lines.pop_back();
    EXPECT_EQ(
        shown(rows),
        (std::vector<Row>{{"1", "0.000", "0.000", "0.000", "0.000", "1.000"}, Row(6), Row(6)}));
    rows.followLast();
    EXPECT_EQ(shown(rows), expected(lines, lengthOf));
}

TEST(VertexRowsTest, AnySequenceOfChangesShowsTheItems) {
    std::mt19937 random(11);
    for (int sequence = 0; sequence < 200; ++sequence) {
        Items items;
        VertexRows lengths(items, extendLength);
        VertexRows mixtures(items, computeMixture);
        for (int step = 0; step < 60; ++step) {
            const auto what = random() % 8;
            bool atTheEnd = true;
            if (what == 0)
                items.emplace_back();
            else if (what == 1 && !items.empty())
                items.back().resize(items.back().size() / 2);
            else if (what == 2 && !items.empty() && !items.back().empty())
                items.back().pop_back();
            else if (what == 3 && !items.empty()) {
                items.erase(items.begin() + static_cast<std::ptrdiff_t>(random() % items.size()));
                atTheEnd = false;
            } else if (what == 4)
                items.insert(items.end(), {Item(), Item(), Item{anyVertex(random)}});
            else if (!items.empty())
                items.back().push_back(anyVertex(random));
            for (VertexRows* rows : {&lengths, &mixtures})
                atTheEnd ? rows->followLast() : rows->rebuild();
            if (random() % 2 == 0) {
                ASSERT_EQ(shown(lengths), expected(items, lengthOf));
                ASSERT_EQ(shown(mixtures), expected(items, mixtureOf));
            }
        }
    }
}

} // namespace orbisk::test
