#include "app/Language.h"

#include "platform/Process.h"
#include "settings/AppSettings.h"

#include <wx/log.h>
#include <wx/translation.h>

namespace orbisk {

namespace {

constexpr const char* catalogFolder = "internation";
constexpr const char* catalogName = "zh";

std::unique_ptr<wxLocale> makeLocale(int toolkitLanguage, ToolkitTexts texts) {
    // A system that lacks the locale would be reported in a message box; the texts don't need it.
    const wxLogNull quiet;
    auto locale = std::make_unique<wxLocale>();
    locale->Init(toolkitLanguage, texts == ToolkitTexts::Included ? wxLOCALE_LOAD_DEFAULT
                                                                  : wxLOCALE_DONT_LOAD_DEFAULT);
    return locale;
}

} // namespace

void setUpLocale(int language, std::unique_ptr<wxLocale>& locale, ToolkitTexts toolkitTexts) {
    locale.reset();
    if (language == languageChinese)
        locale = makeLocale(wxLANGUAGE_CHINESE_SIMPLIFIED, toolkitTexts);
    else if (language == languageEnglish)
        locale = makeLocale(wxLANGUAGE_ENGLISH, toolkitTexts);
    wxFileTranslationsLoader::AddCatalogLookupPathPrefix(catalogFolder);
    if (locale)
        locale->AddCatalog(catalogName);
    platform::settleLocale();
}

} // namespace orbisk
