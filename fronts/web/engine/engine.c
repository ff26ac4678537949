// The engine as the page's worker calls it: one picture of red, green, blue and alpha bytes, taken apart once, and its
// current look. Pictures and settings lie in the module's memory, where the worker writes and reads them.
//
// Every call gives an orbel_status; engine_message has a sentence about the last one that isn't ORBEL_OK.
#include <emscripten/emscripten.h>
#include <math.h>
#include <stdlib.h>

#include "api/orbel.h"

enum { bytesPerPixel = 4 };

static struct {
  orbel_picture picture;
  orbel_stack* stack;
  orbel_look* look;
  char message[400];
} engine;

// In the order in which the worker writes them.
struct Values {
  double gain[ORBEL_BANDS];
  double radius[ORBEL_BANDS];
  double threshold[ORBEL_BANDS];
  double edges[ORBEL_BANDS];
  double residual, mix, half, luminance, overlay, reference_edge, form, limit;
};

static orbel_settings settingsFrom(const struct Values* values) {
  orbel_settings settings;
  orbel_settings_init(&settings, sizeof settings);
  for (int i = 0; i < ORBEL_BANDS; ++i) {
    settings.bands[i].gain = values->gain[i];
    settings.bands[i].radius = values->radius[i];
    settings.bands[i].threshold = values->threshold[i];
    settings.bands[i].edges = (int32_t)values->edges[i];
  }
  settings.residual = values->residual;
  settings.mix = values->mix;
  settings.half = (int32_t)values->half;
  settings.luminance = (int32_t)values->luminance;
  settings.overlay = (int32_t)values->overlay;
  settings.reference_edge = (int32_t)values->reference_edge;
  settings.form = (int32_t)values->form;
  settings.limit = (int32_t)values->limit;
  return settings;
}

static orbel_options options(void) {
  orbel_options o;
  orbel_options_init(&o, sizeof o);
  o.message = engine.message;
  o.message_capacity = sizeof engine.message;
  return o;
}

// Without alpha where the whole picture is opaque: a channel less to carry.
static orbel_picture pixels(uint8_t* at, int32_t width, int32_t height, int32_t channels) {
  orbel_picture picture;
  orbel_picture_interleaved(&picture, sizeof picture, ORBEL_UINT8, width, height, bytesPerPixel, at,
                            (ptrdiff_t)width * bytesPerPixel);
  picture.channels = channels;
  return picture;
}

static void forgetLook(void) {
  orbel_look_free(engine.look);
  engine.look = NULL;
}

static void forgetStack(void) {
  forgetLook();
  orbel_stack_free(engine.stack);
  engine.stack = NULL;
}

EMSCRIPTEN_KEEPALIVE const char* engine_message(void) { return engine.message; }
EMSCRIPTEN_KEEPALIVE const char* engine_version(void) { return orbel_version(); }

// Frees the stack and the look: room for another picture.
EMSCRIPTEN_KEEPALIVE void engine_forget(void) { forgetStack(); }

// Takes over the pixels, which come from malloc, and frees those that it had. channels: 3 for an opaque picture,
// else 4.
EMSCRIPTEN_KEEPALIVE void engine_hold(uint8_t* at, int32_t width, int32_t height, int32_t channels) {
  forgetStack();
  free(engine.picture.base[0]);
  engine.picture = pixels(at, width, height, channels);
}

// The picture taken apart.
EMSCRIPTEN_KEEPALIVE int32_t engine_take_apart(const struct Values* values) {
  forgetStack();
  const orbel_settings settings = settingsFrom(values);
  const orbel_options o = options();
  return orbel_stack_create(&settings, &engine.picture, &o, &engine.stack);
}

// Its look, for a picture of this size.
EMSCRIPTEN_KEEPALIVE int32_t engine_weigh(const struct Values* values, int32_t width, int32_t height) {
  forgetLook();
  const orbel_settings settings = settingsFrom(values);
  const orbel_options o = options();
  return orbel_look_create_in_size(engine.stack, &settings, width, height, &o, &engine.look);
}

// A part of the picture in this size, which is at most its own.
EMSCRIPTEN_KEEPALIVE int32_t engine_reduce(int32_t width, int32_t height, int32_t column, int32_t row, uint8_t* to,
                                           int32_t partWidth, int32_t partHeight) {
  const orbel_picture target = pixels(to, partWidth, partHeight, engine.picture.channels);
  const orbel_options o = options();
  return orbel_reduce(&engine.picture, width, height, column, row, &target, &o);
}

// The look of such a part; from may be to.
EMSCRIPTEN_KEEPALIVE int32_t engine_draw(int32_t column, int32_t row, uint8_t* from, uint8_t* to, int32_t width,
                                         int32_t height) {
  const orbel_picture source = pixels(from, width, height, engine.picture.channels);
  const orbel_picture target = pixels(to, width, height, engine.picture.channels);
  const orbel_options o = options();
  return orbel_look_render(engine.look, column, row, &source, &target, &o);
}

// How much detail each band of the stack holds: its root mean square in levels of 255, of all planes.
EMSCRIPTEN_KEEPALIVE int32_t engine_strengths(double* strengths, int32_t planes) {
  const int32_t width = engine.picture.width;
  const int32_t height = engine.picture.height;
  const size_t samples = (size_t)width * (size_t)height * (size_t)planes;
  float* const band = malloc(samples * sizeof(float));
  if (band == NULL) return ORBEL_NO_MEMORY;
  orbel_picture target;
  orbel_picture_interleaved(&target, sizeof target, ORBEL_FLOAT32, width, height, planes, band,
                            (ptrdiff_t)width * planes * (ptrdiff_t)sizeof(float));
  const orbel_options o = options();
  int32_t status = ORBEL_OK;
  for (int32_t i = 0; i < ORBEL_BANDS && status == ORBEL_OK; ++i) {
    status = orbel_stack_band(engine.stack, i, &engine.picture, &target, &o);
    double squares = 0;
    for (size_t s = 0; s < samples; ++s) squares += (double)band[s] * band[s];
    strengths[i] = 255 * sqrt(squares / (double)samples);
  }
  free(band);
  return status;
}
