#include <orlogl/geometry/GLRouting.h>
#include <orlogl/gl/GLFunctionTable.h>
#include <orlogl/orlogl.h>
#include <orlohost/GeometryData.h>
