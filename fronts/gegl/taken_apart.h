/* taken_apart.h: the picture that an operation was handed last, taken apart by the engine, so that a change of gains
 * alone doesn't take it apart again. */
#ifndef TAKEN_APART_H
#define TAKEN_APART_H

#include "picture_strips.h"

typedef struct {
  GMutex mutex; /* to be held from taken_apart_update to the last use of the stack */
  orbel_stack* stack;
  /* What the stack was made of. The samples count, by their digest, not the buffer: GIMP paints in buffers that stay,
   * and makes new ones of pictures that stay. */
  orbel_settings settings;
  GeglRectangle area;
  const Babl* format;
  StripsDigest digest;
} TakenApart;

TakenApart* taken_apart_new(void);
void taken_apart_free(TakenApart* apart);

/* Sees to it that the stack is that of this picture with these settings. Without success there is none. */
orbel_status taken_apart_update(TakenApart* apart, const orbel_settings* settings, const Strips* picture,
                                const orbel_options* options);

#endif
