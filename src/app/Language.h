#pragma once

#include <wx/intl.h>

#include <memory>

namespace orbisk {

/// Installs the program's texts of an interface language (`Language`; any other value: the source
/// texts).
/// Works as well on a system that has no such locale: texts are then translated all the same, and
/// nobody is told. Numbers keep the dot.
/// @param locale the one in force before, which goes; null without a language.
void setUpLocale(int language, std::unique_ptr<wxLocale>& locale);

/// Adds the texts of the toolkit's own dialogs, ten times as many, for the language that was set
/// up; where both have a text, the program's counts. The C library's locale, on which other threads
/// rely, stays as it is.
void addToolkitTexts(int language);

} // namespace orbisk
