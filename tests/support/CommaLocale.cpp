#include "support/CommaLocale.h"

#include "support/RunCommand.h"

#include <clocale>
#include <cstdlib>

namespace orbisk::test {

namespace {
constexpr const char* commaLocale = "de_DE.UTF-8";
}

CommaLocale::CommaLocale() : m_formerLocale(std::setlocale(LC_ALL, nullptr)) {
    if (!std::setlocale(LC_ALL, commaLocale)) {
        const auto folder = m_compiled.path() / commaLocale;
        const CommandResult compiled =
            runCommand("localedef -i de_DE -f UTF-8 " + shellQuoted(folder.string()));
        setenv("LOCPATH", m_compiled.path().c_str(), 1);
        if (!std::setlocale(LC_ALL, commaLocale))
            m_problem = "no locale with a decimal comma: " + compiled.output;
    }
    if (m_problem.empty() && std::string(std::localeconv()->decimal_point) != ",")
        m_problem = "the locale has no decimal comma";
}

CommaLocale::~CommaLocale() {
    unsetenv("LOCPATH");
    std::setlocale(LC_ALL, m_formerLocale.c_str());
}

} // namespace orbisk::test
