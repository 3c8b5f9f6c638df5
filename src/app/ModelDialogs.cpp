#include "app/ModelDialogs.h"

#include <wx/filedlg.h>
#include <wx/intl.h>

namespace orbisk {

namespace {

wxString answerOf(wxFileDialog&& dialog) {
    return dialog.ShowModal() == wxID_OK ? dialog.GetPath() : wxString();
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
    return answerOf({parent, _("Save file..."), wxEmptyString, wxEmptyString,
                     _("osg file(*.osg)|*.osg|osgb file(*.osgb)|*.osgb|osgt file(*.osgt)|*.osgb|"
                       "obj file(*.obj)|*.obj|3ds file(*.3ds)|*.3ds|dxf file(*.dxf)|*.dxf|"
                       "wrl file(*.wrl)|*.wrl|max file(*.max)|*.max|fbx file(*.fbx)|*.fbx|"
                       "dae file(*.dae)|*.dae "),
                     wxFD_SAVE | wxFD_OVERWRITE_PROMPT});
}

} // namespace orbisk
