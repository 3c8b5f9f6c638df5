#pragma once

#include <osg/Node>

#include <ostream>
#include <string>

namespace orbisk {

/// Writes a model as a Wavefront OBJ file and its materials as an MTL file. Readers turn such files
/// from y up to z up; what is written is turned the other way, so that the model comes back where
/// it was. All transforms are worked into the vertices, in double precision, and every number has
/// all its digits. Kept besides the vertices are normals, the texture coordinates and the picture
/// of unit 0 (under the name the image has), vertex colours without their alpha, the material of
/// the front, and names; what a geometry shares is written once for every place where it stands.
/// The model is only read. Both streams are to write in the "C" locale.
/// @param materials gets nothing where the model has neither materials nor pictures.
/// @param materialFile the name by which the OBJ file is to refer to them.
/// @return whether there was anything to write.
bool writeObj(osg::Node& model, std::ostream& obj, std::ostream& materials,
              const std::string& materialFile);

} // namespace orbisk
