#include "measure/MeasurementExport.h"

#include "support/CommaLocale.h"
#include "support/FileLimits.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <limits>
#include <random>
#include <set>

namespace orbisk::test {

namespace {

namespace fs = std::filesystem;

using Names = std::set<std::string>;

/// Cell texts that tell which cell they are of.
void cellName(std::string& text, std::size_t row, VertexColumn column) {
    text += (column == VertexColumn::Length ? "length" : "total") + std::to_string(row);
}

const ExportedTables namedCells{cellName, cellName};

class MeasurementExportTest : public ::testing::Test {
protected:
    void exportAll(const ExportedTables& tables = namedCells) const {
        exportMeasurements(m_set, m_folder.path().string(), tables);
    }

    /// Exports with the texts of the set's own tables.
    void exportShown() {
        const VertexRows lines(m_set.lines, extendLength);
        const VertexRows areas(m_set.areas, [](const MeasureArea& area, ItemTotal& total) {
            total.value = -0.5 * static_cast<double>(area.size());
        });
        const auto textsOf = [](const VertexRows& rows) -> CellText {
            return [&rows](std::string& text, std::size_t row, VertexColumn column) {
                rows.appendText(text, row, column);
            };
        };
        exportAll({textsOf(lines), textsOf(areas)});
    }

    std::string exported(const char* name) const { return readFile(m_exportFolder / name); }

    const TemporaryFolder m_folder;
    const fs::path m_exportFolder = m_folder.path() / "PickData";
    MeasurementSet m_set;
};

} // namespace

TEST_F(MeasurementExportTest, WritesTheKnownLine) {
    m_set.lines = {{{0, 0, 0}, {3, 4, 0}, {3, 4, 2}}};
    exportShown();
    EXPECT_EQ(exported("Lines.csv"), "#id_lines,id_points,x,y,z,length,lengths\n"
                                     "1,1,0.000,0.000,0.000,0.000,7.000\n"
                                     "1,2,3.000,4.000,0.000,5.000\n"
                                     "1,3,3.000,4.000,2.000,2.000\n");
}

TEST_F(MeasurementExportTest, TwoPointsAreThreeLines) {
    m_set.points = {{1, 2, 3}, {-4.5, 0.0004, 1e6}};
    exportAll();
    EXPECT_EQ(exported("Points.csv"), "#id,x,y,z\n"
                                      "1,1.000 2.000,3.000\n"
                                      "2,-4.500 0.000,1000000.000\n");
}

TEST_F(MeasurementExportTest, BlankNotCommaStandsBetweenXAndYOfAPoint) {
    m_set.points = {{1, 2, 3}};
    exportAll();
    EXPECT_NE(exported("Points.csv").find("1,1.000 2.000,3.000\n"), std::string::npos);
    EXPECT_EQ(exported("Points.csv").find("1.000,2.000"), std::string::npos);
}

TEST_F(MeasurementExportTest, RowsOfTheTableAreReadInOrder) {
    m_set.lines = {{{1, 1, 1}, {2, 2, 2}}, {{3, 3, 3}, {4, 4, 4}, {5, 5, 5}}};
    exportAll();
    EXPECT_EQ(exported("Lines.csv"), "#id_lines,id_points,x,y,z,length,lengths\n"
                                     "1,1,1.000,1.000,1.000,length0,total0\n"
                                     "1,2,2.000,2.000,2.000,length1\n"
                                     "2,1,3.000,3.000,3.000,length2,total2\n"
                                     "2,2,4.000,4.000,4.000,length3\n"
                                     "2,3,5.000,5.000,5.000,length4\n");
}

TEST_F(MeasurementExportTest, AreasGoIntoTheRectangles) {
    m_set.areas = {{{1, 1, 1}, {2, 1, 1}, {2, 2, 1}}, {{3, 3, 3}}};
    exportAll({nullptr, cellName});
    EXPECT_EQ(exported("Rectangles.txt"), "#id_rects,id_points,x,y,z,length,area\n"
                                          "1,1,1.000,1.000,1.000,length0,total0\n"
                                          "1,2,2.000,1.000,1.000,length1\n"
                                          "1,3,2.000,2.000,1.000,length2\n"
                                          "2,1,3.000,3.000,3.000,length3,total3\n");
    EXPECT_EQ(entriesOf(m_exportFolder), Names{"Rectangles.txt"});
}

TEST_F(MeasurementExportTest, FileNamesEndInNoBlank) {
    m_set.points = {{1, 2, 3}};
    m_set.lines = {{{1, 2, 3}}};
    m_set.areas = {{{1, 2, 3}}};
    exportAll();
    EXPECT_EQ(entriesOf(m_exportFolder), (Names{"Points.csv", "Lines.csv", "Rectangles.txt"}));
    EXPECT_EQ(entriesOf(m_folder.path()), Names{"PickData"});
}

TEST_F(MeasurementExportTest, OnlyPointsWriteOnlyTheirFile) {
    m_set.points = {{1, 2, 3}};
    exportAll({});
    EXPECT_EQ(entriesOf(m_exportFolder), Names{"Points.csv"});
}

TEST_F(MeasurementExportTest, NothingMakesOnlyTheFolder) {
    exportAll({});
    EXPECT_TRUE(fs::is_directory(m_exportFolder));
    EXPECT_TRUE(entriesOf(m_exportFolder).empty());
}

TEST_F(MeasurementExportTest, TravelPointsAreNotExported) {
    m_set.travelPoints = {{1, 2, 3}, {4, 5, 6}};
    m_set.areaTriangles = {{1, 2, 3}, {4, 5, 6}, {7, 8, 9}};
    exportAll({});
    EXPECT_TRUE(entriesOf(m_exportFolder).empty());
}

TEST_F(MeasurementExportTest, ItemWithoutVerticesTakesNoRowOfTheTable) {
    m_set.lines = {{}, {{1, 1, 1}}, {}, {{2, 2, 2}, {3, 3, 3}}, {}};
    exportAll();
    EXPECT_EQ(exported("Lines.csv"), "#id_lines,id_points,x,y,z,length,lengths\n"
                                     "2,1,1.000,1.000,1.000,length0,total0\n"
                                     "4,1,2.000,2.000,2.000,length1,total1\n"
                                     "4,2,3.000,3.000,3.000,length2\n");
}

TEST_F(MeasurementExportTest, ItemsAllWithoutVerticesLeaveTheHeader) {
    m_set.lines = {{}};
    m_set.areas = {{}, {}};
    exportAll();
    EXPECT_EQ(exported("Lines.csv"), "#id_lines,id_points,x,y,z,length,lengths\n");
    EXPECT_EQ(exported("Rectangles.txt"), "#id_rects,id_points,x,y,z,length,area\n");
}

TEST_F(MeasurementExportTest, CellWithoutTextIsAnEmptyField) {
    m_set.lines = {{{1, 2, 3}, {4, 5, 6}}};
    exportAll({[](std::string&, std::size_t, VertexColumn) {}, nullptr});
    EXPECT_EQ(exported("Lines.csv"), "#id_lines,id_points,x,y,z,length,lengths\n"
                                     "1,1,1.000,2.000,3.000,,\n"
                                     "1,2,4.000,5.000,6.000,\n");
}

TEST_F(MeasurementExportTest, CellTextOfAnyLengthIsWrittenWhole) {
    m_set.lines = {{{0, 0, 0}}};
    const std::string length(100000, '1');
    exportAll(
        {[&length](std::string& text, std::size_t, VertexColumn) { text += length; }, nullptr});
    EXPECT_EQ(exported("Lines.csv"), "#id_lines,id_points,x,y,z,length,lengths\n"
                                     "1,1,0.000,0.000,0.000," +
                                         length + "," + length + "\n");
}

TEST_F(MeasurementExportTest, OldFileGivesWay) {
    fs::create_directory(m_exportFolder);
    writeFile(m_exportFolder / "Points.csv", std::string(1000, 'o'));
    m_set.points = {{1, 2, 3}};
    exportAll();
    EXPECT_EQ(exported("Points.csv"), "#id,x,y,z\n1,1.000 2.000,3.000\n");
}

TEST_F(MeasurementExportTest, OldFileOfAKindWithoutMeasurementsStays) {
    fs::create_directory(m_exportFolder);
    for (const char* name : {"Points.csv", "Lines.csv", "Rectangles.txt"})
        writeFile(m_exportFolder / name, "old");
    m_set.lines = {{{1, 2, 3}}};
    exportAll();
    EXPECT_EQ(exported("Points.csv"), "old");
    EXPECT_NE(exported("Lines.csv"), "old");
    EXPECT_EQ(exported("Rectangles.txt"), "old");
}

TEST_F(MeasurementExportTest, FolderIsMadeOneLevelDeepOnly) {
    m_set.points = {{1, 2, 3}};
    exportMeasurements(m_set, (m_folder.path() / "none").string(), namedCells);
    EXPECT_TRUE(entriesOf(m_folder.path()).empty());
}

TEST_F(MeasurementExportTest, FolderMayHaveAChineseName) {
    const fs::path folder = m_folder.path() / u8"测量 数据";
    fs::create_directory(folder);
    m_set.points = {{1, 2, 3}};
    exportMeasurements(m_set, folder.string(), namedCells);
    EXPECT_EQ(readFile(folder / "PickData" / "Points.csv"), "#id,x,y,z\n1,1.000 2.000,3.000\n");
}

TEST_F(MeasurementExportTest, FolderThatEndsInASeparatorIsTheSame) {
    m_set.points = {{1, 2, 3}};
    exportMeasurements(m_set, m_folder.path().string() + "/", namedCells);
    EXPECT_EQ(entriesOf(m_exportFolder), Names{"Points.csv"});
}

TEST_F(MeasurementExportTest, FolderWithoutANameIsNotTheWorkingDirectory) {
    const WorkingFolder current;
    m_set.points = {{1, 2, 3}};
    exportMeasurements(m_set, "", namedCells);
    EXPECT_TRUE(entriesOf(current.path()).empty());
}

TEST_F(MeasurementExportTest, FileInTheFoldersPlaceStays) {
    writeFile(m_exportFolder, "kept");
    m_set.points = {{1, 2, 3}};
    exportAll();
    EXPECT_EQ(readFile(m_exportFolder), "kept");
    EXPECT_EQ(entriesOf(m_folder.path()), Names{"PickData"});
}

TEST_F(MeasurementExportTest, FileThatCannotBeCreatedIsSkippedAndTheOthersAreWritten) {
    fs::create_directories(m_exportFolder / "Points.csv");
    m_set.points = {{1, 2, 3}};
    m_set.lines = {{{1, 2, 3}}};
    exportAll();
    EXPECT_TRUE(fs::is_directory(m_exportFolder / "Points.csv"));
    EXPECT_EQ(entriesOf(m_exportFolder), (Names{"Points.csv", "Lines.csv"}));
}

TEST_F(MeasurementExportTest, NumbersHaveDotsInACommaLocale) {
    m_set.points = {{1.5, -2.25, 3.125}};
    m_set.lines = {{{0.5, 0.5, 0.5}, {0.5, 0.5, 2.0}}};
    {
        const CommaLocale comma;
        ASSERT_EQ(comma.problem(), "");
        exportShown();
    }
    EXPECT_EQ(exported("Points.csv"), "#id,x,y,z\n1,1.500 -2.250,3.125\n");
    EXPECT_EQ(exported("Lines.csv"), "#id_lines,id_points,x,y,z,length,lengths\n"
                                     "1,1,0.500,0.500,0.500,0.000,1.500\n"
                                     "1,2,0.500,0.500,2.000,1.500\n");
}

TEST_F(MeasurementExportTest, OddNumbersAreWrittenAsPrinted) {
    constexpr double largest = std::numeric_limits<double>::max();
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    constexpr double infinity = std::numeric_limits<double>::infinity();
    m_set.points = {{-0.0, largest, nan}, {infinity, -infinity, 0.0005}};
    exportAll();
    char rows[1000];
    std::snprintf(rows, sizeof rows, "#id,x,y,z\n%d,%.3f %.3f,%.3f\n%d,%.3f %.3f,%.3f\n", 1, -0.0,
                  largest, nan, 2, infinity, -infinity, 0.0005);
    EXPECT_EQ(exported("Points.csv"), rows);
}

TEST_F(MeasurementExportTest, AnyItemsAreWrittenAsPrinted) {
    std::mt19937 random(2);
    std::uniform_real_distribution<double> anywhere(-1e6, 1e6);
    for (int i = 0; i < 300; ++i) {
        m_set.areas.emplace_back(random() % 6);
        for (osg::Vec3d& vertex : m_set.areas.back())
            vertex.set(anywhere(random), anywhere(random), anywhere(random));
    }
    exportAll();
    std::string expected = "#id_rects,id_points,x,y,z,length,area\n";
    int row = 0;
    for (std::size_t j = 0; j < m_set.areas.size(); ++j)
        for (std::size_t k = 0; k < m_set.areas[j].size(); ++k, ++row) {
            const osg::Vec3d& vertex = m_set.areas[j][k];
            char text[200];
            std::snprintf(text, sizeof text, "%d,%d,%.3f,%.3f,%.3f,length%d",
                          static_cast<int>(j + 1), static_cast<int>(k + 1), vertex.x(), vertex.y(),
                          vertex.z(), row);
            expected += text + (k == 0 ? ",total" + std::to_string(row) : "") + "\n";
        }
    EXPECT_EQ(exported("Rectangles.txt"), expected);
}

TEST_F(MeasurementExportTest, FullDiskLeavesTheOldFilesWhole) {
    fs::create_directory(m_exportFolder);
    const std::string old(1000, 'o');
    writeFile(m_exportFolder / "Points.csv", old);
    m_set.points.assign(10000, {1, 2, 3});
    m_set.lines = {{{1, 2, 3}}};
    {
        const FullDisk full(1000);
        exportAll();
    }
    EXPECT_EQ(exported("Points.csv"), old);
    EXPECT_EQ(entriesOf(m_exportFolder), (Names{"Points.csv", "Lines.csv"}));
    EXPECT_EQ(exported("Lines.csv"), "#id_lines,id_points,x,y,z,length,lengths\n"
                                     "1,1,1.000,2.000,3.000,length0,total0\n");
}

TEST_F(MeasurementExportTest, FullDiskLeavesNoPartOfANewFile) {
    m_set.points.assign(10000, {1, 2, 3});
    {
        const FullDisk full(1000);
        exportAll();
    }
    EXPECT_TRUE(entriesOf(m_exportFolder).empty());
}

TEST_F(MeasurementExportTest, WriteProtectedFolderStaysAsItIs) {
    m_set.points = {{1, 2, 3}};
    ASSERT_EQ(chown(m_folder.path().c_str(), OrdinaryUser::id(), static_cast<gid_t>(-1)), 0);
    fs::permissions(m_folder.path(), fs::perms::owner_read | fs::perms::owner_exec);
    bool tried = false;
    {
        const OrdinaryUser user;
        tried = user.holds();
        if (tried)
            exportAll();
    }
    fs::permissions(m_folder.path(), fs::perms::owner_all);
    if (!tried)
        GTEST_SKIP() << "the superuser's rights cannot be put down here";
    EXPECT_TRUE(entriesOf(m_folder.path()).empty());
}

TEST_F(MeasurementExportTest, NothingIsPrinted) {
    writeFile(m_exportFolder, "in the way");
    m_set.points = {{1, 2, 3}};
    ::testing::internal::CaptureStdout();
    ::testing::internal::CaptureStderr();
    exportAll();
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
}

} // namespace orbisk::test
