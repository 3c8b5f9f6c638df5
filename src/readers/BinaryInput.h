#pragma once

#include "readers/NativeInput.h"

namespace orbisk {

/// Takes the words of the library's native binary format, and throws `DamagedFile` where there are
/// none left. The library's own iterator hands out garbage there, for as long as it is asked.
class BinaryInput : public NativeInput {
public:
    /// @param stream stands behind the eight bytes that the format begins with.
    /// @param isSwapped whether the file was written with the other order of bytes.
    BinaryInput(std::istream& stream, bool isSwapped);

    bool isBinary() const override { return true; }
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
    void advanceToCurrentEndBracket() override;

private:
    void take(char* bytes, std::size_t size);
    template <typename Value>
    Value take();
    void takeText(std::string& value);
    std::int64_t takeBlockSize();
    void beginBlock();
    bool skipReferenceToLeftOut();

    std::vector<std::streamoff> m_blockEnds; ///< of the blocks that are open
};

} // namespace orbisk
