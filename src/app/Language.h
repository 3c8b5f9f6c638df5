#pragma once

#include <wx/intl.h>

#include <memory>

namespace orbisk {

/// Installs the texts of an interface language (`Language`; any other value: the source texts).
/// Works as well on a system that has no such locale: texts are then translated all the same, and
/// nobody is told. Numbers keep the dot.
/// @param locale the one in force before, which goes; null without a language.
void setUpLocale(int language, std::unique_ptr<wxLocale>& locale);

} // namespace orbisk
