#pragma once

#include <string>

#include "import/Warnings.h"
#include "scene/Scene.h"

namespace orloview {

/// Makes a mesh that an importer has read fit to draw: every importer calls this on every mesh, before it
/// adds normals.
///
/// Points, lines and triangles that use a vertex that isn't there, or one whose coordinates are not finite,
/// are taken out, with a warning that names the mesh and says how many. Attributes of the wrong length go
/// too. Normals are brought to length 1 (where all are zero there are none), colours and texture coordinates
/// that are not finite become white and 0. False when nothing of the mesh is left.
bool makeDrawable(Mesh& mesh, const std::string& name, Warnings& warnings);

} // namespace orloview
