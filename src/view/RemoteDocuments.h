#pragma once

namespace orbisk {

/// Has the library that reads XML documents leave alone what is not on this machine. A document may
/// refer to others by address, and it would go and fetch them. For the whole process, once.
void refuseRemoteDocuments();

} // namespace orbisk
