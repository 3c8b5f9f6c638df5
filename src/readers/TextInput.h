#pragma once

#include "readers/NativeInput.h"

namespace orbisk {

/// Takes the words of the library's native text format, and throws `DamagedFile` where there are
/// none left. The library's own iterator hands out the last word there, for as long as it is asked.
class TextInput : public NativeInput {
public:
    /// @param stream stands behind the word that the format begins with.
    explicit TextInput(std::istream& stream);

    bool isBinary() const override { return false; }
    void readBool(bool& value) override;
    void readChar(char& value) override;
    void readSChar(signed char& value) override;
    void readUChar(unsigned char& value) override;
    void readShort(short& value) override;
    void readUShort(unsigned short& value) override;
    void readInt(int& value) override;
    void readUInt(unsigned int& value) override;
    void readLong(long& value) override;
    void readULong(unsigned long& value) override;
    void readFloat(float& value) override;
    void readDouble(double& value) override;
    void readString(std::string& value) override;
    void readStream(std::istream& (*manipulator)(std::istream&)) override;
    void readBase(std::ios_base& (*manipulator)(std::ios_base&)) override;
    void readGLenum(osgDB::ObjectGLenum& value) override;
    void readProperty(osgDB::ObjectProperty& property) override;
    void readMark(osgDB::ObjectMark& mark) override;
    void readCharArray(char* bytes, unsigned int size) override;
    void readWrappedString(std::string& value) override;
    bool matchString(const std::string& wanted) override;
    void advanceToCurrentEndBracket() override;

private:
    const std::string& takeWord();
    long takeSigned();
    unsigned long takeUnsigned();
    char takeLetter();

    std::string m_word;
    bool m_isAhead = false; ///< the word was looked at and is still to be taken
};

} // namespace orbisk
