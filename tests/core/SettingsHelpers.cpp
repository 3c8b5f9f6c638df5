#include "core/SettingsHelpers.h"

#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <memory>
#include <sstream>

namespace orbisk::test {

PathEncoding plainEncoding() {
    const auto same = [](const std::string& path) { return path; };
    return {same, same};
}

AppSettings loaded() {
    AppSettings settings;
    const auto error = loadSettings(settings, testDisplay, plainEncoding());
    EXPECT_FALSE(error) << error->message;
    return settings;
}

AppSettings loadedFrom(const std::string& text) {
    writeFile(settingsFileName, text);
    return loaded();
}

void save(const AppSettings& settings) {
    saveSettings(settings, plainEncoding());
}

Json::Value fileContents() {
    const std::string text = readFile(settingsFileName);
    Json::CharReaderBuilder builder;
    Json::CharReaderBuilder::strictMode(&builder.settings_);
    const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
    Json::Value root;
    std::string errors;
    EXPECT_TRUE(reader->parse(text.data(), text.data() + text.size(), &root, &errors)) << errors;
    return root;
}

std::string fileWith(const std::string& project) {
    return R"({"name":"A","age":23,"sex_is_male":true,"project":)" + project + "}";
}

AppSettings unusualSettings() {
    AppSettings settings;
    settings.rect = {-1920, -35, 2147483647, -2147483647 - 1};
    settings.path_recent = {"/models/one.osgb", "/数据/模型 二.obj", R"(C:\a "b"\c.3ds)",
                            "/a\tb\n/€/\xf0\x9f\x8f\x94.dae", ""};
    settings.sky_show = 7;
    settings.tool_show = -3;
    settings.fovy = 42.123456789012345;
    settings.language = 12;
    return settings;
}

std::string describe(const AppSettings& settings) {
    std::ostringstream text;
    text.precision(17);
    for (const PaneLayout& pane : settings.panes)
        text << pane.w << ' ' << pane.h << ' ' << pane.layer << ' ' << pane.row << ' ' << pane.pos
             << ' ' << pane.direction << ' ' << pane.fx << ' ' << pane.fy << ' ' << pane.fw << ' '
             << pane.fh << ' ' << pane.floating << ' ' << pane.maxing << ' ' << pane.show << '\n';
    const WindowRect& rect = settings.rect;
    text << rect.x << ' ' << rect.y << ' ' << rect.w << ' ' << rect.h << '\n';
    text << settings.sky_show << ' ' << settings.tool_show << ' ' << settings.fovy << ' '
         << settings.language << '\n';
    for (const std::string& path : settings.path_recent)
        text << path.size() << ':' << path << '\n';
    return text.str();
}

} // namespace orbisk::test
