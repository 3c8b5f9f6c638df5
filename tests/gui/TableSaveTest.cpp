#include "support/TableTest.h"
#include "support/TemporaryFolder.h"

#include <wx/filefn.h>

#include <filesystem>
#include <set>

namespace orbisk::test {

namespace fs = std::filesystem;

class TableSaveTest : public TableTest {
protected:
    TableSaveTest() {
        m_set.points = {{1, 2, 3}, {4.5, 5.25, 6.125}};
        m_set.lines = {{{0, 0, 0}, {3, 4, 0}, {3, 4, 2}}, {}, {{1, 1, 1}}};
        m_set.areas = {{{0, 0, 0}, {1, 0, 0}, {1, 1, 0}}, {{5, 6, 7}}};
        m_set.travelPoints = {{1, 2, 3}};
    }

    fs::path saveInto(const fs::path& folder) const { return saveTableInto(*m_dialog, folder); }

    const TemporaryFolder m_parent;
};

TEST_F(TableSaveTest, CancellingCreatesNothing) {
    open();
    const auto before = entriesOf(".");
    answerNextDialog(wxID_CANCEL);
    pressSave(*m_dialog);
    EXPECT_FALSE(isDialogAwaited());
    EXPECT_EQ(entriesOf("."), before);
}

TEST_F(TableSaveTest, WritesWhatTheTableShows) {
    open();
    saveInto(m_parent.path());
    const fs::path folder = m_parent.path() / "PickData";
    EXPECT_EQ(entriesOf(folder),
              (std::set<std::string>{"Points.csv", "Lines.csv", "Rectangles.txt"}));
    EXPECT_EQ(readFile(folder / "Points.csv"), "#id,x,y,z\n"
                                               "1,1.000 2.000,3.000\n"
                                               "2,4.500 5.250,6.125\n");
    EXPECT_EQ(readFile(folder / "Lines.csv"), "#id_lines,id_points,x,y,z,length,lengths\n"
                                              "1,1,0.000,0.000,0.000,0.000,7.000\n"
                                              "1,2,3.000,4.000,0.000,5.000\n"
                                              "1,3,3.000,4.000,2.000,2.000\n"
                                              "3,1,1.000,1.000,1.000,0.000,0.000\n");
    const auto shown = textsOf(areaGrid());
    EXPECT_EQ(readFile(folder / "Rectangles.txt"),
              "#id_rects,id_points,x,y,z,length,area\n"
              "1,1,0.000,0.000,0.000," +
                  shown[0][4] + "," + shown[0][5] + "\n1,2,1.000,0.000,0.000," + shown[1][4] +
                  "\n1,3,1.000,1.000,0.000," + shown[2][4] + "\n2,1,5.000,6.000,7.000," +
                  shown[3][4] + "," + shown[3][5] + "\n");
    EXPECT_EQ(m_edits.told, std::vector<std::string>{});
}

TEST_F(TableSaveTest, ChosenFolderBecomesTheWorkingDirectory) {
    open();
    EXPECT_TRUE(fs::equivalent(saveInto(m_parent.path()), m_parent.path()));
}

TEST_F(TableSaveTest, FolderMayHaveAChineseName) {
    const fs::path folder = m_parent.path() / u8"测量 数据";
    fs::create_directory(folder);
    open();
    saveInto(folder);
    EXPECT_EQ(entriesOf(folder / "PickData").size(), 3u);
}

TEST_F(TableSaveTest, ImpossibleFolderIsPassedOverInSilence) {
    writeFile(m_parent.path() / "PickData", "in the way");
    open();
    saveInto(m_parent.path());
    EXPECT_EQ(readFile(m_parent.path() / "PickData"), "in the way");
    EXPECT_EQ(entriesOf(m_parent.path()), std::set<std::string>{"PickData"});
}

} // namespace orbisk::test
