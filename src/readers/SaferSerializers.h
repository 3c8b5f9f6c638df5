#pragma once

namespace orbisk {

/// Has the library's classes that believe a number while they are read from a native file doubt it:
///
/// - positions of a billboard beyond its drawables are passed over;
/// - a height field has the area that it has heights for, or none;
/// - a shape's detail is bounded, indices beyond the vertices of a mesh are dropped, and a shape
///   that is made of others does not contain itself;
/// - a uniform has as many elements as its array, and an absurd number of them is a failed load, as
///   an absurd number of layers of a terrain is.
///
/// The library's own classes read the rest. From the first call on, for all of the program; any
/// thread. Failed loads are `DamagedFile` (readers/NativeInput.h), thrown while reading.
void installSaferSerializers();

} // namespace orbisk
