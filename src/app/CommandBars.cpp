#include "app/CommandBars.h"

#include "app/SettingsText.h"
#include "platform/Platform.h"

#include <wx/intl.h>
#include <wx/panel.h>
#include <wx/sizer.h>

#include <algorithm>
#include <map>
#include <utility>

namespace orbisk {

namespace {

constexpr int toolIconSide = 32;

std::size_t indexOf(Command command) {
    return static_cast<std::size_t>(command);
}

bool hasTool(const CommandRow& row) {
    return row.tool.icon != nullptr;
}

bool hasMenuItem(const CommandRow& row) {
    return row.menu != CommandMenu::None;
}

wxItemKind itemKind(CommandKind kind) {
    switch (kind) {
    case CommandKind::Check:
        return wxITEM_CHECK;
    case CommandKind::Radio:
        return wxITEM_RADIO;
    default:
        return wxITEM_NORMAL;
    }
}

/// A path as a menu label: neither its ampersands nor its tabs mean anything to a menu.
wxString menuLabel(const std::string& path) {
    wxString label = wxControl::EscapeMnemonics(recentPathText(path));
    label.Replace("\t", " ");
    // A menu has no items without a label; an edited settings file may have such a path.
    return label.empty() ? wxString(" ") : label;
}

} // namespace

CommandBars::CommandBars(wxFrame& frame, CommandHandlers handlers)
    : m_frame(frame), m_handlers(std::move(handlers)) {
    for (const CommandRow& row : commandTable) {
        if (hasMenuItem(row)) {
            m_menuIds[indexOf(row.command)] = wxWindow::NewControlId();
            bindCommand(row.command, menuId(row.command));
        }
        if (hasTool(row)) {
            m_toolIds[indexOf(row.command)] = wxWindow::NewControlId();
            bindCommand(row.command, toolId(row.command));
        }
    }
    const wxWindowID firstRecent = wxWindow::NewControlId(static_cast<int>(maxRecentFiles));
    for (std::size_t i = 0; i < maxRecentFiles; ++i) {
        m_recentIds[i] = firstRecent + static_cast<wxWindowID>(i);
        m_frame.Bind(
            wxEVT_MENU, [this, i](wxCommandEvent&) { m_handlers.openRecent(i); }, recentId(i));
    }
}

void CommandBars::bindCommand(Command command, wxWindowID id) {
    m_frame.Bind(
        wxEVT_MENU,
        [this, command](wxCommandEvent& event) { m_handlers.run(command, event.IsChecked()); }, id);
}

void CommandBars::appendItem(wxMenu& menu, const CommandRow& row) {
    const wxString label = wxGetTranslation(row.label);
    if (row.kind == CommandKind::Submenu) {
        auto* submenu = new wxMenu;
        (row.command == Command::RecentFiles ? m_recentMenu : m_languageMenu) = submenu;
        menu.Append(menuId(row.command), label, submenu);
    } else {
        menu.Append(menuId(row.command), label, wxEmptyString, itemKind(row.kind));
    }
    if (row.separatorAfter)
        menu.AppendSeparator();
}

void CommandBars::buildMenuBar(const std::vector<std::string>& recentFiles) {
    std::map<CommandMenu, wxMenu*> menus;
    for (const MenuTitle& title : menuTitles)
        menus[title.menu] = new wxMenu;
    for (const CommandRow& row : commandTable) {
        if (row.menu == CommandMenu::LanguageSubmenu)
            appendItem(*m_languageMenu, row);
        else if (hasMenuItem(row))
            appendItem(*menus[row.menu], row);
    }
    auto* bar = new wxMenuBar;
    for (const MenuTitle& title : menuTitles)
        bar->Append(menus[title.menu], wxGetTranslation(title.title));
    showRecentFiles(recentFiles);
    m_frame.SetMenuBar(bar);
}

void CommandBars::removeBars() {
    wxMenuBar* bar = m_frame.GetMenuBar();
    m_frame.SetMenuBar(nullptr);
    delete bar;
    m_recentMenu = nullptr;
    m_languageMenu = nullptr;
    m_toolBarPanel = nullptr;
    m_toolBar = nullptr;
}

wxPanel* CommandBars::buildToolBar() {
    m_toolBarPanel = new wxPanel(&m_frame, wxID_ANY);
    m_toolBar = new wxAuiToolBar(m_toolBarPanel, wxID_ANY, wxDefaultPosition, wxDefaultSize,
                                 wxAUI_TB_DEFAULT_STYLE);
    m_toolBar->SetToolBitmapSize(m_toolBar->FromDIP(wxSize(toolIconSide, toolIconSide)));
    for (const CommandRow& row : commandTable) {
        if (!hasTool(row))
            continue;
        m_toolBar->AddTool(toolId(row.command), row.tool.name,
                           platform::iconResource(row.tool.icon, toolIconSide),
                           wxGetTranslation(row.tool.shortHelp), itemKind(row.kind));
    }
    m_toolBar->Realize();
    auto* row = new wxBoxSizer(wxHORIZONTAL);
    row->Add(m_toolBar, wxSizerFlags(1).Expand());
    m_toolBarPanel->SetSizerAndFit(row);
    return m_toolBarPanel;
}

void CommandBars::showRecentFiles(const std::vector<std::string>& recentFiles) {
    const std::size_t shown = std::min(recentFiles.size(), maxRecentFiles);
    // Items are relabelled rather than replaced: the one that was chosen may be at work.
    while (m_recentMenu->GetMenuItemCount() > shown)
        m_recentMenu->Destroy(m_recentMenu->GetMenuItems().back());
    for (std::size_t i = 0; i < shown; ++i) {
        if (i < m_recentMenu->GetMenuItemCount())
            m_recentMenu->SetLabel(recentId(i), menuLabel(recentFiles[i]));
        else
            m_recentMenu->Append(recentId(i), menuLabel(recentFiles[i]));
    }
}

bool CommandBars::isChecked(Command command) const {
    return m_frame.GetMenuBar()->IsChecked(menuId(command));
}

void CommandBars::setChecked(Command command, bool checked) {
    m_frame.GetMenuBar()->Check(menuId(command), checked);
    if (hasTool(rowOf(command))) {
        m_toolBar->ToggleTool(toolId(command), checked);
        m_toolBar->Refresh();
    }
}

void CommandBars::uncheckGroup(CommandGroup group, Command except) {
    for (const CommandRow& row : commandTable)
        if (row.group == group && row.command != except)
            setChecked(row.command, false);
}

wxWindowID CommandBars::menuId(Command command) const {
    return m_menuIds[indexOf(command)];
}

wxWindowID CommandBars::toolId(Command command) const {
    return m_toolIds[indexOf(command)];
}

wxWindowID CommandBars::recentId(std::size_t index) const {
    return m_recentIds[index];
}

} // namespace orbisk
