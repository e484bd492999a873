#pragma once

#include "orlohost/orlohost.h"
