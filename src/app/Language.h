#pragma once

#include <wx/intl.h>

#include <memory>

namespace orbisk {

/// The texts of the toolkit's own dialogs are ten times as many as the program's.
enum class ToolkitTexts { Included, LeftOut };

/// Installs the texts of an interface language (`Language`; any other value: the source texts).
/// Works as well on a system that has no such locale: texts are then translated all the same, and
/// nobody is told. Numbers keep the dot.
/// @param locale the one in force before, which goes; null without a language.
void setUpLocale(int language, std::unique_ptr<wxLocale>& locale,
                 ToolkitTexts toolkitTexts = ToolkitTexts::Included);

} // namespace orbisk
