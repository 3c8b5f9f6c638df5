#pragma once

namespace orbisk::test {

/// How often this thread has called `operator new` so far, from this program or from a library.
long allocationCount();

} // namespace orbisk::test
