#include "api/orbel.h"

const char* orbel_status_text(orbel_status status) {
  switch (status) {
    case ORBEL_OK:
      return "all is well";
    case ORBEL_BAD_ARGUMENT:
      return "an argument is null, has no size, or is out of its range";
    case ORBEL_BAD_SETTING:
      return "a setting holds what isn't allowed";
    case ORBEL_BAD_PICTURE:
      return "a picture's description is none, or doesn't fit the other's";
    case ORBEL_TOO_LARGE:
      return "a radius is too large for edge protection on a picture of this size";
    case ORBEL_NO_MEMORY:
      return "there is not enough memory for a picture of this size";
    case ORBEL_CANCELLED:
      return "the run was called off";
  }
  return "there is no such status";
}

const char* orbel_version(void) { return ORBEL_VERSION; }
