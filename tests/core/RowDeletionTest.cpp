#include "measure/RowDeletion.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <set>

namespace orbisk::test {

namespace {

using List = std::vector<osg::Vec3d>;
using Items = std::vector<List>;

/// Vertices that can be told apart: 0, 1, 2, ...
List numbered(int count, int from = 0) {
    List list;
    for (int i = 0; i < count; ++i)
        list.emplace_back(from + i, 0, 0);
    return list;
}

/// Items of these vertex counts, all vertices numbered in sequence.
Items itemsOf(const std::vector<int>& counts) {
    Items items;
    int next = 0;
    for (const int count : counts) {
        items.push_back(numbered(count, next));
        next += count;
    }
    return items;
}

std::vector<int> numbersIn(const List& list) {
    std::vector<int> numbers;
    for (const osg::Vec3d& vertex : list)
        numbers.push_back(static_cast<int>(vertex.x()));
    return numbers;
}

std::vector<std::vector<int>> numbersIn(const Items& items) {
    std::vector<std::vector<int>> numbers;
    for (const List& item : items)
        numbers.push_back(numbersIn(item));
    return numbers;
}

using Numbers = std::vector<int>;
using ItemNumbers = std::vector<std::vector<int>>;

/// Deletes step by step, as a user would who looks at the rows: each deletion moves the rows behind
/// it up by one.
List erasedOneByOne(List list, TableRows rows) {
    for (std::size_t i = 0; i < rows.size(); ++i) {
        list.erase(list.begin() + static_cast<std::ptrdiff_t>(rows[i]));
        for (std::size_t k = i + 1; k < rows.size(); ++k)
            if (rows[k] > rows[i])
                --rows[k];
    }
    return list;
}

/// Some of the numbers below `count`, each once, shuffled.
TableRows someRows(std::size_t count, std::mt19937& random) {
    TableRows rows;
    for (std::size_t row = 0; row < count; ++row)
        if (random() % 3 == 0)
            rows.push_back(row);
    std::shuffle(rows.begin(), rows.end(), random);
    return rows;
}

} // namespace

TEST(RowDeletionTest, FirstElementsGo) {
    List list = numbered(8);
    eraseFirst(list, 2);
    EXPECT_EQ(numbersIn(list), (Numbers{2, 3, 4, 5, 6, 7}));
    eraseFirst(list, 0);
    EXPECT_EQ(list.size(), 6u);
    eraseFirst(list, 7);
    EXPECT_TRUE(list.empty());
    eraseFirst(list, 1);
    EXPECT_TRUE(list.empty());
}

TEST(RowDeletionTest, ElementsAtThePlacesGo) {
    List list = numbered(6);
    erasePlaces(list, {1, 3});
    EXPECT_EQ(numbersIn(list), (Numbers{0, 2, 4, 5}));
    erasePlaces(list, {3, 0, 3});
    EXPECT_EQ(numbersIn(list), (Numbers{2, 4}));
    erasePlaces(list, {2, 99});
    EXPECT_EQ(numbersIn(list), (Numbers{2, 4}));
    erasePlaces(list, {});
    EXPECT_EQ(list.size(), 2u);
}

TEST(RowDeletionTest, PlacesGoAsIfOneByOneWithTheOthersMovingUp) {
    std::mt19937 random(3);
    for (int i = 0; i < 2000; ++i) {
        List list = numbered(static_cast<int>(random() % 12));
        const TableRows rows = someRows(list.size(), random);
        const List expected = erasedOneByOne(list, rows);
        erasePlaces(list, rows);
        ASSERT_EQ(numbersIn(list), numbersIn(expected));
    }
}

TEST(RowDeletionTest, VerticesOfTheRowsGo) {
    Items items = itemsOf({2, 3, 1});
    eraseVertices(items, {1, 2, 4});
    EXPECT_EQ(numbersIn(items), (ItemNumbers{{0}, {3}, {5}}));
}

TEST(RowDeletionTest, ItemWithoutVerticesTakesNoRow) {
    Items items = itemsOf({0, 2, 0, 2, 0});
    eraseVertices(items, {2});
    EXPECT_EQ(numbersIn(items), (ItemNumbers{{}, {0, 1}, {}, {3}, {}}));
}

TEST(RowDeletionTest, EmptiedItemKeepsItsPlace) {
    Items items = itemsOf({1, 2});
    eraseVertices(items, {0});
    EXPECT_EQ(numbersIn(items), (ItemNumbers{{}, {1, 2}}));
}

TEST(RowDeletionTest, ItemsOfTheRowsGoWhole) {
    Items items = itemsOf({2, 3, 1, 2});
    EXPECT_FALSE(eraseItems(items, {5, 0, 1}));
    EXPECT_EQ(numbersIn(items), (ItemNumbers{{2, 3, 4}, {6, 7}}));
    EXPECT_TRUE(eraseItems(items, {4}));
    EXPECT_EQ(numbersIn(items), (ItemNumbers{{2, 3, 4}}));
}

TEST(RowDeletionTest, LastItemWithoutRowsIsNotErased) {
    Items items = itemsOf({2, 0});
    EXPECT_FALSE(eraseItems(items, {0, 1}));
    EXPECT_EQ(numbersIn(items), (ItemNumbers{{}}));
}

TEST(RowDeletionTest, NothingGoesForNoRowsOrForRowsBeyond) {
    Items items = itemsOf({2, 1});
    EXPECT_FALSE(eraseItems(items, {}));
    EXPECT_FALSE(eraseItems(items, {3, 1000}));
    eraseVertices(items, {3, 1000});
    EXPECT_EQ(numbersIn(items), (ItemNumbers{{0, 1}, {2}}));
    Items none;
    eraseVertices(none, {0});
    EXPECT_FALSE(eraseItems(none, {0}));
}

TEST(RowDeletionTest, AnyRowsOfAnyItemsGoAndNoOthers) {
    std::mt19937 random(5);
    for (int i = 0; i < 2000; ++i) {
        std::vector<int> counts(random() % 6);
        for (int& count : counts)
            count = static_cast<int>(random() % 4);
        const Items before = itemsOf(counts);
        std::size_t rowCount = 0;
        for (const List& item : before)
            rowCount += item.size();
        const TableRows rows = someRows(rowCount, random);
        const std::set<int> chosen(rows.begin(), rows.end());

        ItemNumbers vertices;
        ItemNumbers whole;
        for (const List& item : before) {
            Numbers left;
            for (const int number : numbersIn(item))
                if (chosen.count(number) == 0)
                    left.push_back(number);
            if (left.size() == item.size())
                whole.push_back(left);
            vertices.push_back(left);
        }
        Items items = before;
        eraseVertices(items, rows);
        ASSERT_EQ(numbersIn(items), vertices);
        items = before;
        eraseItems(items, rows);
        ASSERT_EQ(numbersIn(items), whole);
    }
}

} // namespace orbisk::test
