#include "app/Language.h"

#include "platform/Process.h"
#include "settings/AppSettings.h"

#include <wx/log.h>
#include <wx/translation.h>

namespace orbisk {

namespace {

constexpr const char* catalogFolder = "internation";
constexpr const char* catalogName = "zh";

std::unique_ptr<wxLocale> makeLocale(int toolkitLanguage) {
    // A system that lacks the locale would be reported in a message box; the texts don't need it.
    const wxLogNull quiet;
    auto locale = std::make_unique<wxLocale>();
    locale->Init(toolkitLanguage, wxLOCALE_DONT_LOAD_DEFAULT);
    return locale;
}

} // namespace

void setUpLocale(int language, std::unique_ptr<wxLocale>& locale) {
    // Those of `addToolkitTexts`, which belong to no locale.
    wxTranslations::Set(nullptr);
    locale.reset();
    if (language == languageChinese)
        locale = makeLocale(wxLANGUAGE_CHINESE_SIMPLIFIED);
    else if (language == languageEnglish)
        locale = makeLocale(wxLANGUAGE_ENGLISH);
    wxFileTranslationsLoader::AddCatalogLookupPathPrefix(catalogFolder);
    if (locale)
        locale->AddCatalog(catalogName);
    platform::settleLocale();
}

void addToolkitTexts(int language) {
    // In the others they are those of the toolkit's source.
    if (language != languageChinese)
        return;
    // A catalog that is added to others counts before them.
    auto texts = std::make_unique<wxTranslations>();
    texts->SetLanguage(wxLANGUAGE_CHINESE_SIMPLIFIED);
    texts->AddStdCatalog();
    texts->AddCatalog(catalogName);
    wxTranslations::Set(texts.release());
}

} // namespace orbisk
