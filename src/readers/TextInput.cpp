#include "readers/TextInput.h"

#include <osg/Math>
#include <osg/Notify>
#include <osgDB/ObjectWrapper>
#include <osgDB/Registry>

#include <cstdlib>
#include <istream>

namespace orbisk {

namespace {

int valueOfName(const std::string& group, const std::string& name) {
    return osgDB::Registry::instance()->getObjectWrapperManager()->getValue(group, name);
}

bool isSpace(char c) {
    return c == ' ' || c == '\n' || c == '\r';
}

} // namespace

TextInput::TextInput(std::istream& stream) : NativeInput(stream) {}

const std::string& TextInput::takeWord() {
    if (m_isAhead)
        m_isAhead = false;
    else if (!(*_in >> m_word))
        fail("the file ends too early");
    return m_word;
}

long TextInput::takeSigned() {
    return std::strtol(takeWord().c_str(), nullptr, 0);
}

unsigned long TextInput::takeUnsigned() {
    return std::strtoul(takeWord().c_str(), nullptr, 0);
}

void TextInput::readBool(bool& value) {
    value = takeWord() == "TRUE";
    sawOther();
}

void TextInput::readChar(char& value) {
    value = static_cast<char>(takeSigned());
    sawOther();
}

void TextInput::readSChar(signed char& value) {
    value = static_cast<signed char>(takeSigned());
    sawOther();
}

void TextInput::readUChar(unsigned char& value) {
    value = static_cast<unsigned char>(takeSigned());
    sawOther();
}

void TextInput::readShort(short& value) {
    value = static_cast<short>(takeSigned());
    sawOther();
}

void TextInput::readUShort(unsigned short& value) {
    value = static_cast<unsigned short>(takeUnsigned());
    sawOther();
}

void TextInput::readInt(int& value) {
    value = static_cast<int>(takeSigned());
    sawNumber(value);
}

void TextInput::readUInt(unsigned int& value) {
    value = static_cast<unsigned int>(takeUnsigned());
    sawNumber(value);
}

void TextInput::readLong(long& value) {
    value = takeSigned();
    sawOther();
}

void TextInput::readULong(unsigned long& value) {
    value = takeUnsigned();
    sawOther();
}

void TextInput::readFloat(float& value) {
    value = osg::asciiToFloat(takeWord().c_str());
    sawOther();
}

void TextInput::readDouble(double& value) {
    value = osg::asciiToDouble(takeWord().c_str());
    sawOther();
}

void TextInput::readString(std::string& value) {
    value = takeWord();
    sawWord(value);
}

void TextInput::readStream(std::istream& (*)(std::istream&)) {}

void TextInput::readBase(std::ios_base& (*)(std::ios_base&)) {}

void TextInput::readGLenum(osgDB::ObjectGLenum& value) {
    value.set(static_cast<GLenum>(valueOfName("GL", takeWord())));
    sawOther();
}

void TextInput::readProperty(osgDB::ObjectProperty& property) {
    const std::string wanted = property._name;
    const std::string& word = takeWord();
    if (property._mapProperty) {
        property.set(valueOfName(property._name, word));
    } else {
        if (word != wanted)
            OSG_WARN << "The file has \"" << word << "\" where \"" << wanted << "\" belongs."
                     << std::endl;
        property._name = word;
        property.set(0);
    }
    sawProperty(wanted, property._value);
}

void TextInput::readMark(osgDB::ObjectMark& mark) {
    takeWord();
    if (mark._name == "{")
        sawBegin();
    else if (mark._name == "}")
        sawEnd();
}

void TextInput::readCharArray(char*, unsigned int) {}

char TextInput::takeLetter() {
    char letter = 0;
    if (!m_isAhead) {
        if (!_in->get(letter))
            fail("the file ends too early");
        return letter;
    }
    letter = m_word.front();
    m_word.erase(0, 1);
    m_isAhead = !m_word.empty();
    return letter;
}

void TextInput::readWrappedString(std::string& value) {
    char letter = takeLetter();
    while (isSpace(letter))
        letter = takeLetter();
    if (letter == '"') {
        for (letter = takeLetter(); letter != '"'; letter = takeLetter())
            value += letter == '\\' ? takeLetter() : letter;
    } else {
        for (; letter != ' ' && letter != '\0' && letter != '\n'; letter = takeLetter())
            value += letter;
    }
    sawText(value);
}

bool TextInput::matchString(const std::string& wanted) {
    if (takeWord() == wanted)
        return true;
    m_isAhead = true;
    return false;
}

void TextInput::advanceToCurrentEndBracket() {
    for (std::size_t open = 1; open > 0;) {
        const std::string& word = takeWord();
        if (word == "{")
            ++open;
        else if (word == "}")
            --open;
    }
    sawEnd();
}

} // namespace orbisk
