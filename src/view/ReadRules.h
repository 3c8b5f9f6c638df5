#pragma once

#include <optional>
#include <string>

namespace orbisk {

/// What a name that the scene-graph library is asked to read stands for.
enum class ReadKind { Model, Image, Shader, Other };

/// Says why the scene-graph library must not read a name, which may come out of a model.
///
/// The library picks a reader by what follows the last dot of a name: a texture called "x.lua" is
/// executed, "http://..." makes it connect, "name.gz" and "x.obj.90,0,0.rot" hide another name in
/// theirs. What may be read are files of the model, image, shader and font formats that are known
/// to do nothing but read; everything else is refused, in whatever spelling it comes.
/// @return nothing where the name may be read, else a reason to be shown after the name.
std::optional<std::string> readRefusal(const std::string& name, ReadKind kind);

/// Whether a name is one of a picture, in a format that is read.
bool isImageName(const std::string& name);

/// Whether a name stands for another machine's file in the way of Windows ("\\server\share\x" in
/// either kind of slashes): reading it sends the user's credentials there.
bool isShareName(const std::string& name);

/// Has `readRefusal` let through models and images of this extension (lower case, no dot), for
/// which the program brings a reader of its own. Before the first read.
void allowReading(const std::string& extension);

/// Whether the program may load the library's plug-in of this name ("obj" for osgdb_obj.so), which
/// is what reads, writes or knows classes. Nothing where nobody has looked at it yet; it is not
/// loaded then either.
std::optional<bool> isPluginAllowed(const std::string& name);

} // namespace orbisk
