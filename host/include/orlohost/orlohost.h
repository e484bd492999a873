#pragma once

// Everything that a host hands to the library, in one include.

#include "orlohost/GeometryData.h"
#include "orlohost/HWEnvironment.h"
#include "orlohost/HWInterfaces.h"
#include "orlohost/IHWMemoryObject.h"
#include "orlohost/ParticleData.h"
#include "orlohost/PixelArray2D.h"
#include "orlohost/RasterFormat.h"
#include "orlohost/ShadingNodeSpec.h"
#include "orlohost/WindowWrapper.h"
#include "orlohost/koColor.h"
#include "orlohost/koLinear.h"
#include "orlohost/koSharedObject.h"
#include "orlohost/koString.h"
#include "orlohost/koUtil.h"
