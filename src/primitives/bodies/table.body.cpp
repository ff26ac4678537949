// The table of this row. A body has the public name of its primitive, inside the namespace of the row.

#include "primitives/bodies.h"

namespace ROW {

#define PRIMITIVE(name, argumentCount) decltype(::name) name;
#include "primitives/primitive_list.inc"
#undef PRIMITIVE

extern const Bodies bodies = {
#define PRIMITIVE(name, argumentCount) ROW::name,
#include "primitives/primitive_list.inc"
#undef PRIMITIVE
};

}  // namespace ROW
