// Any bytes, as a 3DS file: there is no model, or one that can be drawn and picked.

#include "readers/Reader3ds.h"
#include "support/MeshFuzzing.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    return orbisk::fuzz::readAnyBytes<orbisk::Reader3ds>(data, size);
}
