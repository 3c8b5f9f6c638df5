#pragma once

#include <string>

/// A reader for model files of the extension "slow", which do what their text says:
///
///     seconds 3          read that long
///     gate               read until `openGate` was called
///     throw memory       throw std::bad_alloc
///     throw range        throw std::out_of_range
///     throw number       throw an int
///     nothing            find no model in it
///
/// What reads well is a small model.
namespace orbisk::test {

/// Writes such a file into the working directory. @return its full path.
std::string writeSlowModel(const std::string& name, const std::string& text);

/// Whether a reader is at work.
bool isReading();

/// How many models were read to their end.
int modelsRead();

/// Lets readers through that wait at the gate, now and later.
void openGate();

} // namespace orbisk::test
