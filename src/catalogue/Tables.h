// The tables that the group records point to. Internal to the catalogue and its tests; everybody
// else reaches them through the group records.
#pragma once

#include "catalogue/ClassicAttributes.h"
#include "catalogue/Enumerations.h"
#include "catalogue/ModernAttributes.h"
