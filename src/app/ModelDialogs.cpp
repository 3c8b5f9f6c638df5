#include "app/ModelDialogs.h"

#include <wx/filedlg.h>
#include <wx/filefn.h>
#include <wx/filename.h>
#include <wx/intl.h>

#include <cstddef>

namespace orbisk {

namespace {

wxString answerOf(wxFileDialog&& dialog) {
    return dialog.ShowModal() == wxID_OK ? dialog.GetPath() : wxString();
}

/// What was chosen; a name without an extension gets that of the chosen filter, as some systems'
/// dialogs see to themselves.
wxString withExtension(const wxFileDialog& dialog) {
    wxFileName file(dialog.GetPath());
    wxArrayString names;
    wxArrayString patterns;
    wxParseCommonDialogsFilter(dialog.GetWildcard(), names, patterns);
    const auto chosen = static_cast<std::size_t>(dialog.GetFilterIndex());
    if (!file.HasExt() && chosen < patterns.size())
        file.SetExt(patterns[chosen].AfterLast('.').Trim());
    return file.GetFullPath();
}

} // namespace

wxString askForModelToOpen(wxWindow* parent) {
    return answerOf({parent, _("Open file..."), wxEmptyString, wxEmptyString,
                     _("all files(*)|*.*|osg file(*.osg)|*.osg|osgb file(*.osgb)|*.osgb|"
                       "osgt file(*.osgt)|*.osgb|obj file(*.obj)|*.obj|3ds file(*.3ds)|*.3ds|"
                       "dxf file(*.dxf)|*.dxf|wrl file(*.wrl)|*.wrl|max file(*.max)|*.max|"
                       "fbx file(*.fbx)|*.fbx|dae file(*.dae)|*.dae||"),
                     wxFD_OPEN | wxFD_FILE_MUST_EXIST});
}

wxString askForModelOnWelcomePage(wxWindow* parent) {
    return answerOf({parent, _("Open file..."), wxEmptyString, wxEmptyString,
                     _("all files(*.*) |*.*|osg file(*.osg)|*.osg|osgb file(*.osgb)|*.osgb|"
                       "obj file(*.obj)|*.obj|3ds file(*.3ds)|*.3ds|dxf file(*.dxf)|*.dxf|"
                       "wrl file(*.wrl)|*.wrl|max file(*.max)|*.max|fbx file(*.fbx)|*.fbx|"
                       "dae file(*.dae)|*.dae||")});
}

wxString askWhereToSaveModel(wxWindow* parent) {
    wxFileDialog dialog(parent, _("Save file..."), wxEmptyString, wxEmptyString,
                        _("osg file(*.osg)|*.osg|osgb file(*.osgb)|*.osgb|osgt file(*.osgt)|*.osgb|"
                          "obj file(*.obj)|*.obj|3ds file(*.3ds)|*.3ds|dxf file(*.dxf)|*.dxf|"
                          "wrl file(*.wrl)|*.wrl|max file(*.max)|*.max|fbx file(*.fbx)|*.fbx|"
                          "dae file(*.dae)|*.dae "),
                        wxFD_SAVE | wxFD_OVERWRITE_PROMPT);
    while (dialog.ShowModal() == wxID_OK) {
        const wxString path = withExtension(dialog);
        if (path == dialog.GetPath() || !wxFileExists(path))
            return path;
        // Whether to overwrite was asked for another name.
        dialog.SetPath(path);
    }
    return {};
}

} // namespace orbisk
