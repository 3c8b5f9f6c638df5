#pragma once

#include "app/Translatable.h"

#include <array>
#include <cstddef>

namespace orbisk {

/// Every command of the program, in the order in which menu items are created.
enum class Command {
    Open,
    OpenUrl,
    RecentFiles,
    Save,
    Quit,
    About,
    Help,
    Options,
    Language,
    Chinese,
    English,
    ResetModel,
    PointCloud,
    Tin,
    Gray,
    Toolbar,
    Skybox,
    PointPick,
    LinePick,
    AreaPick,
    AutomaticRoam,
    MeasureTable,
    Tips,
    Count
};

inline constexpr std::size_t commandCount = static_cast<std::size_t>(Command::Count);

enum class CommandKind { Normal, Check, Radio, Submenu };

/// Where the command's menu item stands; `None` for a command that is a tool only.
enum class CommandMenu { None, File, Set, LanguageSubmenu, Model, Display, Measure, Help };

/// Commands of which at most one is on. The groups are kept by code: their items are plain checks.
enum class CommandGroup { None, Display, Measure };

/// Whether a command acts without a model; one that needs a model only undoes its own check then.
enum class ModelNeed { None, Needed };

/// A command's tool; null texts where it has none.
struct CommandTool {
    const char* icon = nullptr;      ///< resource name, lower case
    const char* name = nullptr;      ///< label
    const char* shortHelp = nullptr; ///< shown under the pointer, translated
};

/// All that is to be known of one command. Menu bar, tool bar and tests read these rows.
struct CommandRow {
    Command command;
    const char* label; ///< of the menu item, translated
    CommandKind kind;
    CommandMenu menu;
    bool separatorAfter;
    CommandGroup group;
    ModelNeed needs;
    CommandTool tool;
};

/// The rows in the order of `Command`.
inline constexpr std::array<CommandRow, commandCount> commandTable{{
    {Command::Open,
     translatable("Open"),
     CommandKind::Normal,
     CommandMenu::File,
     false,
     CommandGroup::None,
     ModelNeed::None,
     {"icon_open32", "ToolOpen", translatable("Open File")}},
    {Command::OpenUrl,
     translatable("Open URL"),
     CommandKind::Normal,
     CommandMenu::File,
     false,
     CommandGroup::None,
     ModelNeed::None,
     {}},
    {Command::RecentFiles,
     translatable("Recent Files"),
     CommandKind::Submenu,
     CommandMenu::File,
     true,
     CommandGroup::None,
     ModelNeed::None,
     {}},
    {Command::Save,
     translatable("Save"),
     CommandKind::Normal,
     CommandMenu::File,
     true,
     CommandGroup::None,
     ModelNeed::None,
     {"icon_save32", "ToolSave", translatable("Save File")}},
    {Command::Quit,
     translatable("Quit"),
     CommandKind::Normal,
     CommandMenu::File,
     true,
     CommandGroup::None,
     ModelNeed::None,
     {}},
    {Command::About,
     translatable("About"),
     CommandKind::Normal,
     CommandMenu::Help,
     false,
     CommandGroup::None,
     ModelNeed::None,
     {}},
    {Command::Help,
     translatable("Help"),
     CommandKind::Normal,
     CommandMenu::Help,
     false,
     CommandGroup::None,
     ModelNeed::None,
     {}},
    {Command::Options,
     translatable("Options"),
     CommandKind::Normal,
     CommandMenu::Set,
     false,
     CommandGroup::None,
     ModelNeed::None,
     {}},
    {Command::Language,
     translatable("Language"),
     CommandKind::Submenu,
     CommandMenu::Set,
     false,
     CommandGroup::None,
     ModelNeed::None,
     {}},
    {Command::Chinese,
     translatable("Chinese"),
     CommandKind::Radio,
     CommandMenu::LanguageSubmenu,
     false,
     CommandGroup::None,
     ModelNeed::None,
     {}},
    {Command::English,
     translatable("English"),
     CommandKind::Radio,
     CommandMenu::LanguageSubmenu,
     false,
     CommandGroup::None,
     ModelNeed::None,
     {}},
    {Command::ResetModel,
     translatable("Reset Model"),
     CommandKind::Normal,
     CommandMenu::Model,
     true,
     CommandGroup::None,
     ModelNeed::None,
     {"icon_original32", "Original", translatable("Reset Model")}},
    {Command::PointCloud,
     translatable("PointCloud"),
     CommandKind::Check,
     CommandMenu::Model,
     false,
     CommandGroup::Display,
     ModelNeed::Needed,
     {"icon_pts32", "PointCloud", translatable("Point Cloud Model")}},
    {Command::Tin,
     translatable("TIN"),
     CommandKind::Check,
     CommandMenu::Model,
     false,
     CommandGroup::Display,
     ModelNeed::Needed,
     {"icon_tin32", "TIN", translatable("TIN Model")}},
    {Command::Gray,
     translatable("Gray"),
     CommandKind::Check,
     CommandMenu::Model,
     false,
     CommandGroup::Display,
     ModelNeed::Needed,
     {"icon_gray32", "Gray", translatable("Gray model")}},
    {Command::Toolbar,
     translatable("Toolbar"),
     CommandKind::Check,
     CommandMenu::Display,
     false,
     CommandGroup::None,
     ModelNeed::None,
     {}},
    {Command::Skybox,
     translatable("Skybox"),
     CommandKind::Check,
     CommandMenu::Display,
     false,
     CommandGroup::None,
     ModelNeed::None,
     {}},
    {Command::PointPick,
     translatable("Point Pick"),
     CommandKind::Check,
     CommandMenu::Measure,
     false,
     CommandGroup::Measure,
     ModelNeed::Needed,
     {"icon_point32", "ToolPickPoint", translatable("Point Pick")}},
    {Command::LinePick,
     translatable("Line Pick"),
     CommandKind::Check,
     CommandMenu::Measure,
     false,
     CommandGroup::Measure,
     ModelNeed::Needed,
     {"icon_line32", "ToolPickLine", translatable("Line Pick")}},
    {Command::AreaPick,
     translatable("Area Pick"),
     CommandKind::Check,
     CommandMenu::Measure,
     false,
     CommandGroup::Measure,
     ModelNeed::Needed,
     {"icon_rect32", "ToolPickRect", translatable("Area Pick")}},
    {Command::AutomaticRoam,
     translatable("Automatic Roam"),
     CommandKind::Check,
     CommandMenu::Measure,
     true,
     CommandGroup::Measure,
     ModelNeed::Needed,
     {"icon_travel32", "ToolTravel", translatable("Automatic Roam")}},
    {Command::MeasureTable,
     translatable("Measure table"),
     CommandKind::Normal,
     CommandMenu::Measure,
     false,
     CommandGroup::None,
     ModelNeed::None,
     {}},
    {Command::Tips,
     nullptr,
     CommandKind::Normal,
     CommandMenu::None,
     false,
     CommandGroup::None,
     ModelNeed::None,
     {"icon_tips", "Tips", translatable("Brenholt tip message")}},
}};

/// One menu of the bar, in the bar's order.
struct MenuTitle {
    CommandMenu menu;
    const char* title; ///< translated
};

inline constexpr MenuTitle menuTitles[] = {
    {CommandMenu::File, translatable("&File")},
    {CommandMenu::Set, translatable("Set")},
    {CommandMenu::Model, translatable("Model")},
    {CommandMenu::Display, translatable("Display")},
    {CommandMenu::Measure, translatable("Measure")},
    {CommandMenu::Help, translatable("Help")},
};

/// The row of `command`.
constexpr const CommandRow& rowOf(Command command) {
    return commandTable[static_cast<std::size_t>(command)];
}

/// Whether the command has a menu item or a tool that shows a check.
constexpr bool isCheck(Command command) {
    return rowOf(command).kind == CommandKind::Check;
}

} // namespace orbisk
