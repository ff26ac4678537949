/* orbel:band-equalizer, the equalizer as an operation of GEGL: in GIMP with a dialog, a preview and a split view, and
 * in whatever else runs GEGL's graphs.
 *
 * GIMP 3 keeps filters in the picture's file, by these names. So the operation's name, its properties' names and the
 * words of `form` never change, nor what they mean; properties may be added. */

/* The properties are in a language of their own. */
/* clang-format off */
#ifdef GEGL_PROPERTIES

enum_start(band_equalizer_form)
  enum_value(FORM_PYRAMID, "pyramid", "Pyramid, as the plug-in")
  enum_value(FORM_WAVELETS, "wavelets", "Wavelets, no halos")
enum_end(BandEqualizerForm)

#define GAIN(n, label, what) \
  property_double(gain_##n, label, 100.0) \
    description("Gain of " what ": 0 removes it, 100 leaves it, 200 doubles it, below 0 inverts it") \
    value_range(-1000.0, 1000.0) ui_range(0.0, 300.0) ui_steps(1.0, 10.0) ui_digits(0) \
    ui_meta("unit", "percent")

GAIN(1, "Finest detail", "the finest band")
GAIN(2, "Fine detail", "the second band")
GAIN(3, "Middle detail", "the middle band")
GAIN(4, "Broad structures", "the fourth band")
GAIN(5, "Broadest structures", "the broadest band")

property_double(residual, "Residual", 100.0)
  description("Gain of what is left under the broadest band, in percent")
  value_range(-1000.0, 1000.0) ui_range(0.0, 200.0) ui_steps(1.0, 10.0) ui_digits(0)
  ui_meta("unit", "percent")

property_boolean(protect_edges, "Protect edges", TRUE)
  description("Keep strong edges out of the bands, so that raising these draws no halos; off: out of none")

property_enum(form, "Form", BandEqualizerForm, band_equalizer_form, FORM_WAVELETS)
  description("How the picture is taken apart")

property_boolean(luminance, "Luminance only", TRUE)
  description("Work on luminance and keep the colours; off: on each colour by itself")

property_boolean(limit, "Limit", TRUE)
  description("Drive no colour beyond black or white")

property_boolean(half, "Detail around grey", FALSE)
  description("Add middle grey: with a residual of 0 the detail shows alone")

property_int(reference_edge, "Reference edge", 1024)
  description("The longer side, in pixels, of the picture that the radii are meant for: the same look at every size. "
              "0: radii are in this picture's own pixels")
  value_range(0, 32767) ui_range(0, 4096) ui_steps(1, 128)

property_double(mix, "Mix", 100.0)
  description("How much of the result is blended into the original")
  value_range(0.0, 100.0) ui_steps(1.0, 10.0) ui_digits(0)
  ui_meta("unit", "percent")

property_boolean(details, "Details", FALSE)
  description("Show radius, threshold and edges of each band; changes nothing in the picture")

#define DETAILS(n, band, threshold) \
  property_double(radius_##n, band ": radius", 3.0) \
    description("Reach of the low-pass, in pixels twice as large from band to band; 0: none") \
    value_range(0.0, 32767.0) ui_range(0.0, 30.0) ui_steps(0.1, 1.0) ui_digits(1) \
    ui_meta("visible", "details") \
  property_double(threshold_##n, band ": threshold", threshold) \
    description("How far samples may differ, of 255, and still be smoothed together") \
    value_range(0.0, 255.0) ui_range(0.0, 100.0) ui_steps(1.0, 10.0) ui_digits(1) \
    ui_meta("visible", "details") ui_meta("sensitive", "protect-edges") \
  property_boolean(edges_##n, band ": keep off edges", TRUE) \
    description("Keep strong edges out of this band") \
    ui_meta("visible", "details") ui_meta("sensitive", "protect-edges")

DETAILS(1, "Finest", 30.0)
DETAILS(2, "Fine", 25.0)
DETAILS(3, "Middle", 20.0)
DETAILS(4, "Broad", 15.0)
DETAILS(5, "Broadest", 15.0)

#else

/* GIMP shows GEGL's messages to people. */
#define G_LOG_DOMAIN "GEGL"
/* No translations of our own. */
#define GETTEXT_PACKAGE NULL

#define GEGL_OP_FILTER
#define GEGL_OP_NAME band_equalizer
#define GEGL_OP_C_SOURCE orbel-band-equalizer.c
/* clang-format on */

#include <gegl-op.h>
#include <unistd.h>

#include "taken_apart.h"

/* Of a run, some five minutes on one processor. */
static const double MOST_TAPS = 7.5e11;

static orbel_settings settings_of(GeglOperation* operation) {
  const GeglProperties* const o = GEGL_PROPERTIES(operation);
  const double gains[] = {o->gain_1, o->gain_2, o->gain_3, o->gain_4, o->gain_5};
  const double radii[] = {o->radius_1, o->radius_2, o->radius_3, o->radius_4, o->radius_5};
  const double thresholds[] = {o->threshold_1, o->threshold_2, o->threshold_3, o->threshold_4, o->threshold_5};
  const gboolean edges[] = {o->edges_1, o->edges_2, o->edges_3, o->edges_4, o->edges_5};
  orbel_settings settings;
  orbel_settings_init(&settings, sizeof settings);
  for (int i = 0; i < ORBEL_BANDS; ++i) {
    settings.bands[i] = (orbel_band){gains[i], radii[i], thresholds[i], o->protect_edges && edges[i], 0};
  }
  settings.residual = o->residual;
  settings.mix = o->mix;
  settings.half = o->half;
  settings.luminance = o->luminance;
  settings.reference_edge = o->reference_edge;
  settings.form = o->form == FORM_WAVELETS ? ORBEL_WAVELETS : ORBEL_PYRAMID;
  settings.limit = o->limit;
  return settings;
}

static void prepare(GeglOperation* operation) {
  GeglProperties* const o = GEGL_PROPERTIES(operation);
  if (o->user_data == NULL) o->user_data = taken_apart_new();
  const Babl* const source = gegl_operation_get_source_format(operation, "input");
  gegl_operation_set_format(operation, "input", strips_format(source));
  gegl_operation_set_format(operation, "output", strips_result_format(source));
}

static void finalize(GObject* object) {
  GeglProperties* const o = GEGL_PROPERTIES(object);
  if (o->user_data != NULL) taken_apart_free(o->user_data);
  o->user_data = NULL;
  G_OBJECT_CLASS(gegl_op_parent_class)->finalize(object);
}

/* Every sample counts for every other, so all of the input is one piece of work; of a plane without end, what is asked
 * for. */
static GeglRectangle whole_input(GeglOperation* operation, const GeglRectangle* asked) {
  const GeglRectangle* const whole = gegl_operation_source_get_bounding_box(operation, "input");
  return whole == NULL || gegl_rectangle_is_infinite_plane(whole) ? *asked : *whole;
}

static GeglRectangle get_required_for_output(GeglOperation* operation, const gchar* pad, const GeglRectangle* region) {
  (void)pad;
  return whole_input(operation, region);
}

static GeglRectangle get_cached_region(GeglOperation* operation, const GeglRectangle* region) {
  return whole_input(operation, region);
}

static GeglRectangle get_invalidated_by_change(GeglOperation* operation, const gchar* pad,
                                               const GeglRectangle* region) {
  (void)pad;
  return whole_input(operation, region);
}

/* The wanted part of the result. */
static orbel_status render(const orbel_look* look, const GeglRectangle* area, const Strips* from, const Strips* to,
                           const orbel_options* options) {
  const gint column = to->area.x - area->x;
  const gint row = to->area.y - area->y;
  for (gint line = 0; line < to->area.height; line += to->height) {
    const orbel_picture picture = strips_read(from, line);
    const orbel_picture result = strips_describe(to, line);
    const orbel_status status = orbel_look_render(look, column, row + line, &picture, &result, options);
    if (status != ORBEL_OK) return status;
    const GeglRectangle part = strips_part(to, line);
    gegl_buffer_set(to->buffer, &part, 0, to->format, to->pixels, GEGL_AUTO_ROWSTRIDE);
  }
  return ORBEL_OK;
}

/* Refuses what a whole program would hang in: nobody can call a run of GEGL's off. */
static orbel_status check_work(const orbel_settings* settings, const Strips* picture, const orbel_options* options) {
  orbel_picture shape = strips_describe(picture, 0);
  shape.height = picture->area.height;
  orbel_plan plan;
  orbel_plan_init(&plan, sizeof plan);
  const orbel_status status = orbel_plan_run(settings, &shape, options, &plan);
  if (status != ORBEL_OK) return status;
  const double memory = (double)sysconf(_SC_PHYS_PAGES) * (double)sysconf(_SC_PAGESIZE);
  if (plan.bytes > memory / 2) {
    g_snprintf(
        options->message, options->message_capacity,
        "this would take %.1f GB, more than half of the machine's memory: take smaller radii, or a reference edge",
        plan.bytes / 1e9);
    return ORBEL_NO_MEMORY;
  }
  if (plan.taps > MOST_TAPS) {
    g_snprintf(options->message, options->message_capacity,
               "this would take some %.0f minutes: take smaller radii, or a reference edge", plan.taps * 4e-10 / 60);
    return ORBEL_TOO_LARGE;
  }
  return ORBEL_OK;
}

static orbel_status equalize(GeglOperation* operation, GeglBuffer* input, GeglBuffer* output,
                             const GeglRectangle* wanted, const orbel_options* options) {
  TakenApart* const apart = GEGL_PROPERTIES(operation)->user_data;
  const orbel_settings settings = settings_of(operation);
  const GeglRectangle area = whole_input(operation, wanted);
  const Babl* const format = gegl_operation_get_format(operation, "input");
  Strips whole = {0};
  Strips from = {0};
  Strips to = {0};
  orbel_look* look = NULL;

  orbel_status status = strips_open(&whole, input, format, &area, 0);
  if (status == ORBEL_OK) status = check_work(&settings, &whole, options);
  if (status == ORBEL_OK) status = strips_open(&from, input, format, wanted, 0);
  if (status == ORBEL_OK) status = strips_open(&to, output, gegl_operation_get_format(operation, "output"), wanted, 0);
  if (status == ORBEL_OK) {
    g_mutex_lock(&apart->mutex);
    status = taken_apart_update(apart, &settings, &whole, options);
    if (status == ORBEL_OK) status = orbel_look_create(apart->stack, &settings, options, &look);
    if (status == ORBEL_OK) status = render(look, &area, &from, &to, options);
    orbel_look_free(look);
    g_mutex_unlock(&apart->mutex);
  }
  strips_close(&to);
  strips_close(&from);
  strips_close(&whole);
  return status;
}

static gboolean process(GeglOperation* operation, GeglBuffer* input, GeglBuffer* output, const GeglRectangle* result,
                        gint level) {
  (void)level;
  const GeglRectangle area = whole_input(operation, result);
  GeglRectangle wanted;
  if (input == NULL || !gegl_rectangle_intersect(&wanted, result, &area)) return TRUE;

  gint threads = 1;
  g_object_get(gegl_config(), "threads", &threads, NULL);
  char message[256] = "";
  orbel_options options;
  orbel_options_init(&options, sizeof options);
  options.threads = threads;
  options.message = message;
  options.message_capacity = sizeof message;
  const orbel_status status = equalize(operation, input, output, &wanted, &options);
  if (status != ORBEL_OK) {
    g_message("orbel:band-equalizer left the picture as it is: %s",
              message[0] != '\0' ? message : orbel_status_text(status));
    gegl_buffer_copy(input, &wanted, GEGL_ABYSS_NONE, output, &wanted);
  }
  return TRUE;
}

static void gegl_op_class_init(GeglOpClass* klass) {
  GeglOperationClass* const operation = GEGL_OPERATION_CLASS(klass);
  G_OBJECT_CLASS(klass)->finalize = finalize;
  operation->prepare = prepare;
  operation->get_required_for_output = get_required_for_output;
  operation->get_cached_region = get_cached_region;
  operation->get_invalidated_by_change = get_invalidated_by_change;
  operation->threaded = FALSE; /* the engine has threads of its own, as many as GEGL is set to */
  operation->want_in_place = FALSE;
  GEGL_OPERATION_FILTER_CLASS(klass)->process = process;
  /* No "license": GEGL 0.4.42 hides what it doesn't know among licences, and knows the GNU ones alone. */
  gegl_operation_class_set_keys(
      operation, "name", "orbel:band-equalizer", "title", "Band Equalizer", "categories", "enhance:sharpen",
      "description", "Takes a picture apart into five bands of detail, from fine to broad, and weighs each",
      "gimp:menu-path", "<Image>/Filters/Enhance", "gimp:menu-label", "_Band Equalizer...", NULL);
}

#endif
