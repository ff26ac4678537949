#include "taken_apart.h"

#include <string.h>

TakenApart* taken_apart_new(void) {
  TakenApart* const apart = g_new0(TakenApart, 1);
  g_mutex_init(&apart->mutex);
  return apart;
}

void taken_apart_free(TakenApart* apart) {
  orbel_stack_free(apart->stack);
  g_mutex_clear(&apart->mutex);
  g_free(apart);
}

static gboolean same_shape(const orbel_settings* a, const orbel_settings* b) {
  for (int i = 0; i < ORBEL_BANDS; ++i) {
    if (a->bands[i].radius != b->bands[i].radius || a->bands[i].threshold != b->bands[i].threshold ||
        a->bands[i].edges != b->bands[i].edges) {
      return FALSE;
    }
  }
  return a->luminance == b->luminance && a->reference_edge == b->reference_edge && a->form == b->form;
}

static orbel_status in_strips(const orbel_settings* settings, const Strips* picture, const orbel_options* options,
                              orbel_stack** stack) {
  orbel_picture shape = strips_describe(picture, 0);
  shape.height = picture->area.height;
  orbel_status status = orbel_stack_begin(settings, &shape, options, stack);
  for (gint line = 0; status == ORBEL_OK && line < picture->area.height; line += picture->height) {
    const orbel_picture lines = strips_read(picture, line);
    status = orbel_stack_add(*stack, &lines, options);
  }
  return status;
}

/* The pyramid without a reference edge wants the picture as a whole. */
static orbel_status as_a_whole(const orbel_settings* settings, const Strips* picture, const orbel_options* options,
                               orbel_stack** stack) {
  Strips whole;
  orbel_status status = strips_open(&whole, picture->buffer, picture->format, &picture->area, picture->area.height);
  if (status != ORBEL_OK) return status;
  const orbel_picture source = strips_read(&whole, 0);
  status = orbel_stack_create(settings, &source, options, stack);
  strips_close(&whole);
  return status;
}

orbel_status taken_apart_update(TakenApart* apart, const orbel_settings* settings, const Strips* picture,
                                const orbel_options* options) {
  const StripsDigest digest = strips_digest(picture);
  if (apart->stack != NULL && apart->format == picture->format && gegl_rectangle_equal(&apart->area, &picture->area) &&
      memcmp(&apart->digest, &digest, sizeof digest) == 0 && same_shape(&apart->settings, settings)) {
    return ORBEL_OK;
  }
  orbel_stack_free(apart->stack);
  apart->stack = NULL;
  const gboolean line_by_line = settings->reference_edge > 0 || settings->form == ORBEL_WAVELETS;
  const orbel_status status = (line_by_line ? in_strips : as_a_whole)(settings, picture, options, &apart->stack);
  if (status != ORBEL_OK) {
    orbel_stack_free(apart->stack);
    apart->stack = NULL;
    return status;
  }
  apart->settings = *settings;
  apart->area = picture->area;
  apart->format = picture->format;
  apart->digest = digest;
  return ORBEL_OK;
}
