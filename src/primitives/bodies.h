// The table of one row: the address of each primitive's body.
#pragma once

#include "primitives/primitives.h"
#include "primitives/rows.h"

struct Bodies {
#define PRIMITIVE(name, argumentCount) decltype(&::name) name;
#include "primitives/primitive_list.inc"
#undef PRIMITIVE
};

DECLARE_IN_EACH_ROW(extern const Bodies bodies)
