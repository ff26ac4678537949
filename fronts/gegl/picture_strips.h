/* picture_strips.h: a part of a GeglBuffer as the engine takes it, strip by strip, so that no second copy of the
 * picture is ever in memory. */
#ifndef PICTURE_STRIPS_H
#define PICTURE_STRIPS_H

#include <gegl.h>
#include <orbel.h>

/* The format that the engine reads a picture of this format in: its own, where the engine knows that, else floats;
 * perceptual, in its own RGB space, one colour for grey ones, with alpha where it has it. null: floats with alpha. */
const Babl* strips_format(const Babl* picture);

/* The same with floats, in which results come. */
const Babl* strips_result_format(const Babl* picture);

typedef struct {
  GeglBuffer* buffer;
  const Babl* format; /* one of the above */
  GeglRectangle area; /* of the buffer, what is cut into strips */
  gint height;        /* of a strip, but the last one */
  gpointer pixels;    /* room for a strip */
} Strips;

/* ORBEL_NO_MEMORY where there is no room, ORBEL_TOO_LARGE where GEGL can't count a line's bytes. height 0: one that
 * suits GEGL's tiles. With every status the strips may be closed. */
orbel_status strips_open(Strips* strips, GeglBuffer* buffer, const Babl* format, const GeglRectangle* area,
                         gint height);
void strips_close(Strips* strips);

/* The part of the area that the strip which begins at this line covers. */
GeglRectangle strips_part(const Strips* strips, gint line);

/* That part as a picture in `pixels`: described, and for reading also filled. */
orbel_picture strips_describe(const Strips* strips, gint line);
orbel_picture strips_read(const Strips* strips, gint line);

/* Two independent sums of 64 bits over all samples of the area. */
typedef struct {
  guint64 sums[2];
} StripsDigest;
StripsDigest strips_digest(const Strips* strips);

#endif
