#include "picture_strips.h"

#include <string.h>

/* Whole tiles of GEGL's and GIMP's usual size. */
enum { STRIP_HEIGHT = 128 };

static const Babl* in_space_of(const char* name, const Babl* picture) {
  const Babl* space = picture != NULL ? babl_format_get_space(picture) : NULL;
  /* An ink's profile says nothing about red, green and blue. */
  if (space != NULL && babl_space_is_cmyk(space)) space = NULL;
  return babl_format_with_space(name, space);
}

const Babl* strips_result_format(const Babl* picture) {
  if (picture == NULL || babl_format_is_palette(picture)) return in_space_of("R'G'B'A float", picture);
  const gboolean grey = (babl_get_model_flags(picture) & BABL_MODEL_FLAG_GRAY) != 0;
  const gboolean alpha = babl_format_has_alpha(picture) != 0;
  return in_space_of(grey ? (alpha ? "Y'A float" : "Y' float") : (alpha ? "R'G'B'A float" : "R'G'B' float"), picture);
}

const Babl* strips_format(const Babl* picture) {
  static const char* const integers[] = {"R'G'B' u8",  "R'G'B'A u8",  "Y' u8",  "Y'A u8",
                                         "R'G'B' u16", "R'G'B'A u16", "Y' u16", "Y'A u16"};
  for (gsize i = 0; picture != NULL && i < G_N_ELEMENTS(integers); ++i) {
    const Babl* const format = in_space_of(integers[i], picture);
    if (format == picture) return format;
  }
  return strips_result_format(picture);
}

orbel_status strips_open(Strips* strips, GeglBuffer* buffer, const Babl* format, const GeglRectangle* area,
                         gint height) {
  const gsize row = (gsize)area->width * (gsize)babl_format_get_bytes_per_pixel(format);
  *strips = (Strips){buffer, format, *area, MIN(height != 0 ? height : STRIP_HEIGHT, area->height), NULL};
  if (row > G_MAXINT) return ORBEL_TOO_LARGE;
  strips->pixels = g_try_malloc_n((gsize)strips->height, row);
  return strips->pixels != NULL ? ORBEL_OK : ORBEL_NO_MEMORY;
}

void strips_close(Strips* strips) { g_free(strips->pixels); }

GeglRectangle strips_part(const Strips* strips, gint line) {
  GeglRectangle part = strips->area;
  part.y += line;
  part.height = MIN(strips->height, strips->area.height - line);
  return part;
}

orbel_picture strips_describe(const Strips* strips, gint line) {
  const GeglRectangle part = strips_part(strips, line);
  const Babl* const type = babl_format_get_type(strips->format, 0);
  const orbel_samples samples = type == babl_type("u8")    ? ORBEL_UINT8
                                : type == babl_type("u16") ? ORBEL_UINT16
                                                           : ORBEL_FLOAT32;
  orbel_picture picture;
  orbel_picture_interleaved(&picture, sizeof picture, samples, part.width, part.height,
                            babl_format_get_n_components(strips->format), strips->pixels,
                            (ptrdiff_t)part.width * babl_format_get_bytes_per_pixel(strips->format));
  return picture;
}

orbel_picture strips_read(const Strips* strips, gint line) {
  const GeglRectangle part = strips_part(strips, line);
  gegl_buffer_get(strips->buffer, &part, 1.0, strips->format, strips->pixels, GEGL_AUTO_ROWSTRIDE, GEGL_ABYSS_NONE);
  return strips_describe(strips, line);
}

static guint64 turned(guint64 word, int bits) { return word << bits | word >> (64 - bits); }

StripsDigest strips_digest(const Strips* strips) {
  guint64 first = 0x243F6A8885A308D3U; /* the digits of pi, as is the custom */
  guint64 second = 0x13198A2E03707344U;
  for (gint line = 0; line < strips->area.height; line += strips->height) {
    const orbel_picture picture = strips_read(strips, line);
    const gsize bytes = (gsize)picture.row_step * (gsize)picture.height;
    for (gsize at = 0; at < bytes; at += sizeof(guint64)) {
      guint64 word = 0;
      memcpy(&word, (const char*)strips->pixels + at, MIN(sizeof word, bytes - at));
      /* The turn brings the high bits down, where the product spreads them again. */
      first = turned(first ^ word, 23) * 0x9E3779B97F4A7C15U;
      second = turned(second + word, 37) * 0xC2B2AE3D27D4EB4FU;
    }
  }
  return (StripsDigest){{first, second}};
}
