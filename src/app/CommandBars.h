#pragma once

#include "app/CommandTable.h"
#include "app/RecentFiles.h"

#include <wx/aui/auibar.h>
#include <wx/frame.h>
#include <wx/menu.h>
#include <wx/panel.h>
#include <wx/windowid.h>

#include <array>
#include <functional>
#include <string>
#include <vector>

namespace orbisk {

/// What the bars tell the frame.
struct CommandHandlers {
    std::function<void(Command command, bool checked)> run;
    std::function<void(std::size_t index)> openRecent;
};

/// Menu bar and tool bar, both made from the command table, and the check states they show: those
/// of a menu item and its tool are always the same. The identifiers live as long as this object;
/// the bars themselves may be destroyed with the frame's contents and built again.
class CommandBars {
public:
    CommandBars(wxFrame& frame, CommandHandlers handlers);

    /// Builds the menu bar and installs it in the frame.
    void buildMenuBar(const std::vector<std::string>& recentFiles);

    /// Builds the tool bar on a panel of its own, a child of the frame; gives the panel.
    wxPanel* buildToolBar();

    /// Destroys the menu bar and forgets the tool bar, which goes with the frame's children.
    void removeBars();

    /// Rewrites the "Recent Files" submenu.
    void showRecentFiles(const std::vector<std::string>& recentFiles);

    bool isChecked(Command command) const;

    /// Checks or unchecks the command in menu and tool bar.
    void setChecked(Command command, bool checked);

    /// Unchecks all commands of a group, except one.
    void uncheckGroup(CommandGroup group, Command except = Command::Count);

    wxWindowID menuId(Command command) const;
    wxWindowID toolId(Command command) const;
    wxWindowID recentId(std::size_t index) const;

    wxAuiToolBar* toolBar() const { return m_toolBar; }

    wxPanel* toolBarPanel() const { return m_toolBarPanel; }

private:
    void bindCommand(Command command, wxWindowID id);
    void appendItem(wxMenu& menu, const CommandRow& row);

    wxFrame& m_frame;
    CommandHandlers m_handlers;
    std::array<wxWindowIDRef, commandCount> m_menuIds;
    std::array<wxWindowIDRef, commandCount> m_toolIds;
    std::array<wxWindowIDRef, maxRecentFiles> m_recentIds;
    wxMenu* m_recentMenu = nullptr;
    wxMenu* m_languageMenu = nullptr;
    wxPanel* m_toolBarPanel = nullptr;
    wxAuiToolBar* m_toolBar = nullptr;
};

} // namespace orbisk
