/* orbel.h: the Orbel Band Equalizer for other programs, in C.
 *
 * The equalizer takes a picture, or only its luminance, apart into five bands of detail, from fine (0) to coarse (4),
 * and a residual; weighs each; and puts the picture together again. At gains of 100 the picture comes back.
 *
 *   #include <orbel.h>
 *
 *   orbel_settings settings;
 *   orbel_settings_init(&settings, sizeof settings);
 *   settings.bands[1].gain = 150;
 *   orbel_picture picture;
 *   orbel_picture_interleaved(&picture, sizeof picture, ORBEL_UINT8, width, height, 3, pixels, 3 * width);
 *   orbel_status status = orbel_equalize(&settings, &picture, &picture, NULL);
 *   if (status != ORBEL_OK) fprintf(stderr, "%s\n", orbel_status_text(status));
 *
 * Promises that hold for every call:
 * - Records begin with their size, which their ..._init function sets: a program that was compiled with an older header
 *   goes on to work with a newer library, which takes what the record doesn't have at its default.
 * - No exception leaves a call, nothing is printed, and the process isn't ended.
 * - Nothing of the process is touched: no locale, no signal handler, no environment variable, no working folder. The
 *   caller's floating-point environment neither matters nor changes.
 * - Threads that a call starts have ended when it returns. Afterwards the process may fork, and unload the library.
 * - Any number of threads may make calls at once, also on one stack, as long as no two of them write to one picture.
 * - A picture's result is the same to the last bit on every processor and for any number of threads. (Of samples that
 *   are no numbers, sign and payload aren't held.)
 */
#ifndef ORBEL_H
#define ORBEL_H

#include <stddef.h>
#include <stdint.h>

#if defined(__GNUC__) && !defined(_WIN32)
#define ORBEL_API __attribute__((visibility("default")))
#else
#define ORBEL_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Statuses ---------------------------------------------------------------------------------------------------- */

typedef enum orbel_status {
  ORBEL_OK = 0,
  ORBEL_BAD_ARGUMENT = 1, /* a null pointer, a record without a size, a number out of its range */
  ORBEL_BAD_SETTING = 2,  /* a member of the settings holds what isn't allowed */
  ORBEL_BAD_PICTURE = 3,  /* a picture's description is none, or doesn't fit the other's */
  ORBEL_TOO_LARGE = 4,    /* an edge-protecting filter's window has no room beside the picture */
  ORBEL_NO_MEMORY = 5,    /* memory could not be had */
  ORBEL_CANCELLED = 6     /* the progress callback called the run off */
} orbel_status;

/* One sentence, in English; never null. */
ORBEL_API const char* orbel_status_text(orbel_status status);

/* "0.2.0": of the library that runs. */
ORBEL_API const char* orbel_version(void);

/* ---- Settings ---------------------------------------------------------------------------------------------------- */

#define ORBEL_BANDS 5

/* How a picture is taken apart. */
typedef enum orbel_form {
  ORBEL_PYRAMID = 0, /* as the plug-in does: each level is half the size of the one before; a band also holds what
                        halving lost of edges, so that high gains draw halos along them */
  ORBEL_WAVELETS = 1 /* edge-avoiding wavelets, without halving: no band holds an edge, so that bands can be raised two
                        and three times without a halo */
} orbel_form;

/* One band of detail: what the low-pass of its level takes away. */
typedef struct orbel_band {
  double gain;      /* in percent: 0 removes the band, 100 leaves it, 200 doubles it, below 0 inverts it; default 100 */
  double radius;    /* of the low-pass, in pixels twice as large from band to band; 0: none; default 3. In the pyramid
                       they are those of the band's level, and it is a standard deviation. With wavelets the taps are a
                       third of it apart, to the next whole pixel, which is their spline's standard deviation */
  double threshold; /* how far samples may differ, on a scale of 0 to 255, and still be smoothed together; for a band
                       with edges; where they differ so far, wavelets smooth with half the weight; default 255 for the
                       finest band, 10 for the others */
  int32_t edges;    /* 1: keep strong edges out of the band, by a bilateral filter or a wavelet's weights; 0: a Gaussian
                       or a B3 spline; default 0 for the finest band, 1 for the others */
  int32_t reserved; /* 0 */
} orbel_band;

typedef struct orbel_settings {
  size_t size; /* of the record */
  orbel_band bands[ORBEL_BANDS];
  double residual;        /* gain of what is left under the coarsest band, in percent; default 100 */
  double mix;             /* how much of the result is blended into the original, 0 to 100 percent; default 100 */
  int32_t half;           /* 1: add middle grey at the end, to see detail alone around it; default 0 */
  int32_t luminance;      /* 1: work on luminance and keep the colours; 0: on each colour by itself; default 1 */
  int32_t overlay;        /* a cross of two diagonals and a stripe, so many pixels wide; 0: none; default 0 */
  int32_t reference_edge; /* the longer side, in pixels, of the picture that the radii are meant for: the look is then
                             the same at every size; 0: radii are in pixels of the picture, whatever its size;
                             default 0 */
  int32_t form;           /* an orbel_form; default ORBEL_PYRAMID */
  int32_t limit; /* 1: hold a pixel's change back as its colours come near to black or white, which none of them
                    is driven beyond; 0: what is beyond them is clipped; default 0 */
} orbel_settings;

/* Fills the record with the defaults. size: sizeof(orbel_settings). Returns ORBEL_BAD_ARGUMENT for null and for a size
 * that no version had. */
ORBEL_API orbel_status orbel_settings_init(orbel_settings* settings, size_t size);

/* ORBEL_OK, or ORBEL_BAD_SETTING with a message in English that names the member and what is allowed, cut off to
 * capacity bytes with its terminating zero; message may be null. Every call that takes settings checks them itself.
 *   gain, residual    -1000 to 1000
 *   radius, overlay, reference_edge  0 to 32767
 *   threshold         0 to 255; 0: no low-pass where edges is 1
 *   edges, half, luminance, form, limit  0 or 1
 *   mix               0 to 100 */
ORBEL_API orbel_status orbel_settings_check(const orbel_settings* settings, char* message, size_t capacity);

/* The 24 keys by which scripts for Photoshop know the settings: "CON1" to "CON5" (gain, finest band first), "RAD1" to
 * "RAD5", "THR1" to "THR5", "EDG1" to "EDG5", "FCTR" (residual), "HALF", "LUMI" and "WDTH" (overlay). mix,
 * reference_edge, form and limit have no key: the plug-in knows the pyramid alone. */
#define ORBEL_KEYS 24

typedef enum orbel_key_kind { ORBEL_KEY_NUMBER = 0, ORBEL_KEY_FLAG = 1, ORBEL_KEY_INTEGER = 2 } orbel_key_kind;

/* The key with this number, in the order of the plug-in's record, or null from ORBEL_KEYS on. */
ORBEL_API const char* orbel_key(int32_t number);

/* ORBEL_BAD_ARGUMENT for null, and for a key that there isn't; kind may be null. Set takes any number for a key of kind
 * ORBEL_KEY_NUMBER, and any that a 32-bit integer holds for others, else gives ORBEL_BAD_SETTING; the ranges are looked
 * at by orbel_settings_check. */
ORBEL_API orbel_status orbel_settings_get(const orbel_settings* settings, const char* key, double* value);
ORBEL_API orbel_status orbel_settings_set(orbel_settings* settings, const char* key, double value);
ORBEL_API orbel_status orbel_key_kind_of(const char* key, orbel_key_kind* kind);

/* The least and the most that orbel_settings_check allows. */
ORBEL_API orbel_status orbel_key_range(const char* key, double* least, double* most);

/* ---- Pictures ---------------------------------------------------------------------------------------------------- */

typedef enum orbel_samples {
  ORBEL_UINT8 = 0,       /* white is 255 */
  ORBEL_UINT16 = 1,      /* white is 65535, as in files */
  ORBEL_UINT16_HOST = 2, /* white is 32768, as in Photoshop */
  ORBEL_FLOAT32 = 3      /* white is 1; nothing is clipped */
} orbel_samples;

#define ORBEL_CHANNELS 4

/* A picture where it lies. The sample of channel c in column x of row y is at
 *   (char*)base[c] + x * column_step + y * row_step
 * so that planes, interleaved channels, parts of larger pictures, and flipped or turned ones are all described. Samples
 * need no alignment. */
typedef struct orbel_picture {
  size_t size;   /* of the record */
  int32_t width; /* 1 to 536870896, likewise the height */
  int32_t height;
  int32_t channels;           /* 1 grey; 2 grey and alpha; 3 red, green, blue; 4 these and alpha */
  int32_t samples;            /* an orbel_samples */
  void* base[ORBEL_CHANNELS]; /* a source isn't written to */
  ptrdiff_t column_step;      /* in bytes, any but 0, of all channels */
  ptrdiff_t row_step;         /* likewise */
} orbel_picture;

/* Describes channels that lie beside each other, in rows that are row_step bytes apart. size: sizeof(orbel_picture).
 * pixels may be null, for a plan. Returns ORBEL_BAD_ARGUMENT for a null picture, a size that no version had, channels
 * or samples that there aren't, and rows that no memory spans. */
ORBEL_API orbel_status orbel_picture_interleaved(orbel_picture* picture, size_t size, orbel_samples samples,
                                                 int32_t width, int32_t height, int32_t channels, void* pixels,
                                                 ptrdiff_t row_step);

/* Describes channels one after another, each of height rows that are row_step bytes apart. Otherwise likewise. */
ORBEL_API orbel_status orbel_picture_planar(orbel_picture* picture, size_t size, orbel_samples samples, int32_t width,
                                            int32_t height, int32_t channels, void* pixels, ptrdiff_t row_step);

/* Copies the samples of one picture into another of the same size and channels, white to white. Integers go to other
 * integers by v * white / white in double precision, to nearest; everything else as in a run. Both may be the same
 * picture; else they don't overlap. */
ORBEL_API orbel_status orbel_convert(const orbel_picture* source, const orbel_picture* target);

/* ---- The run ----------------------------------------------------------------------------------------------------- */

/* Told the part of the work that is done, 0 to 1, on the thread that made the call. Gives 0 to go on; anything else
 * calls the run off, as long as no sample of the target has been written. It may make calls of its own, which run on
 * its thread alone; it must not throw. */
typedef int32_t (*orbel_progress)(void* context, double done);

typedef struct orbel_options {
  size_t size;               /* of the record */
  int32_t threads;           /* the caller's among them; 0: as many as there are processors; default 0 */
  int32_t reserved;          /* 0, else refused, as in a band */
  const orbel_picture* mask; /* one channel of the picture's size: white where the result shows in full, black where the
                                original stays; null: the result everywhere; default null */
  orbel_progress progress;   /* null: nobody is told; default null */
  void* context;             /* handed to progress */
  char* message;             /* gets one sentence about what stopped the call, which names the member that is at fault;
                                "" where nothing did; default null */
  size_t message_capacity;   /* in bytes, with the terminating zero */
} orbel_options;

ORBEL_API orbel_status orbel_options_init(orbel_options* options, size_t size);

/* Equalizes source into target. options may be null.
 *
 * Both have one size and the same channels; types of samples may differ. They may be the same picture: the same samples
 * at the same addresses. Else they must not overlap, which is refused where it is plain, as for bytes and floats that
 * begin at one address. Nor may a target's samples overlap each other, or the mask's. Colours are clipped to their
 * type's range, floats aren't. Alpha is carried over, scaled to the target's type where that is another, and has no
 * part in the work.
 *
 * With a reference edge the picture is worked on at that size: its planes are reduced by area means (enlarged by
 * Lanczos, where they are smaller), equalized there, and what changes, but for the finest band, comes back by bilinear
 * interpolation (by area means; with wavelets to larger pictures by a guided filter, which keeps their edges): result =
 * picture + (g - 1) * plane + change, g being the finest band's gain and change = equalized - g * reduced. So the look
 * is the same for a picture of any size, and the work hardly depends on it. A picture isn't reduced below a shorter
 * side of 64 samples; the radii take the rest, up to 32767. Where its longer side is the reference edge, the result is
 * that of a run without one.
 *
 * Samples of 8 bits, and of 16 with white at 32768, become floats and come back as the plug-in converts its host's, so
 * that results are the plug-in's; 16 bits with white at 65535 go by double precision, so that every level comes back.
 *
 * Checked in this order: options, settings, source, target, mask, and whether the filters have room (ORBEL_TOO_LARGE);
 * in the course of the work ORBEL_NO_MEMORY and ORBEL_CANCELLED. With each of these the target is as it was. */
ORBEL_API orbel_status orbel_equalize(const orbel_settings* settings, const orbel_picture* source,
                                      const orbel_picture* target, const orbel_options* options);

/* ---- The plan of a run ------------------------------------------------------------------------------------------- */

typedef enum orbel_low_pass {
  ORBEL_NONE = 0,
  ORBEL_GAUSSIAN = 1,
  ORBEL_BILATERAL = 2,
  ORBEL_WAVELET = 3
} orbel_low_pass;

typedef struct orbel_level {
  int32_t width; /* of the level whose detail the band is; the first one has the size that is worked on */
  int32_t height;
  int32_t low_pass; /* an orbel_low_pass */
  int32_t window;   /* half-width of the bilateral filter's square; 0 for others */
  double taps;      /* samples that the low-pass visits */
} orbel_level;

typedef struct orbel_plan {
  size_t size; /* of the record */
  orbel_level levels[ORBEL_BANDS];
  double taps;  /* of all levels and planes: a measure of the time a run takes, by and large 0.15 to 0.4 ns each */
  double bytes; /* that a run asks for at most beside the pictures and the mask; the system's allocator may hold
                   somewhat more */
  double stack_bytes;    /* that a stack keeps */
  double look_bytes;     /* that a look keeps at most beside it, and what renders with it */
  int32_t refused_band;  /* the band that ORBEL_TOO_LARGE is about, 0 for the finest; ORBEL_BANDS where it is none */
  int32_t reserved;      /* 0 */
  double largest_radius; /* that this band has room for */
} orbel_plan;

ORBEL_API orbel_status orbel_plan_init(orbel_plan* plan, size_t size);

/* What orbel_equalize would do with such a picture, whose base addresses and steps aren't looked at, and what status it
 * would begin with; of the options, threads and message count. The plan is filled for ORBEL_OK and ORBEL_TOO_LARGE. A
 * run goes by the same plan. options may be null. */
ORBEL_API orbel_status orbel_plan_run(const orbel_settings* settings, const orbel_picture* source,
                                      const orbel_options* options, orbel_plan* plan);

/* ---- A picture reduced ------------------------------------------------------------------------------------------- */

/* Reduces a picture by area means: a sample of the result is the mean of the samples that it covers, those at its edges
 * by the part of them that it covers. Each channel by itself, alpha too, which doesn't weigh the colours. So reduced, a
 * picture is what a look in another size is handed.
 *
 * width and height are those of the whole result, each 1 to the source's (ORBEL_BAD_ARGUMENT). target is the part of it
 * whose first sample is in this column and row; of the source, only the lines and columns that this part covers are
 * read. A part has the whole's samples, bit for bit.
 *
 * Both have the same channels; types of samples may differ. They become floats and come back as in a run, and the mean
 * is taken in single precision, of lines first and then along the line: where a sample covers up to 100 each way it
 * lies within 1e-6 of white from the true one, where it covers 6000 within 1e-4, before it is rounded to the target's
 * type. At the source's own size and in its type the samples come over as they are. target is never the source, nor may
 * it overlap it, which is refused where it is plain: where a channel of both begins at one address.
 *
 * Of the options, which may be null, threads and message count. Checked in this order: options, source, width, height,
 * target; then ORBEL_NO_MEMORY. With each of these the target is as it was. */
ORBEL_API orbel_status orbel_reduce(const orbel_picture* source, int32_t width, int32_t height, int32_t column,
                                    int32_t row, const orbel_picture* target, const orbel_options* options);

/* ---- Taken apart once, weighed often ----------------------------------------------------------------------------- */

/* A picture taken apart: with a reference edge a few planes of that size, whatever the picture's; without one a third
 * of the picture's own planes. It has none of the picture's samples, which are handed over again for each result. In
 * the pyramid's form, a picture of at most 32 samples in width or height at the size that is worked on is taken apart
 * again for each look. */
typedef struct orbel_stack orbel_stack;

/* Takes source apart, with the settings' radii, thresholds, edges, luminance, reference edge and form. *stack is null
 * with every status but ORBEL_OK. The mask has no part in it. Otherwise as orbel_equalize. */
ORBEL_API orbel_status orbel_stack_create(const orbel_settings* settings, const orbel_picture* source,
                                          const orbel_options* options, orbel_stack** stack);

/* The same for a picture that comes line by line and is never in memory as a whole: begins a stack for one of this
 * shape, whose base addresses and steps aren't looked at, and takes its next lines, from the top downwards, any number
 * at a time: a picture of the same width and channels, with samples of any type, and of so many lines. With the last
 * one it is taken apart, and the stack is like any other, bit for bit. Wants a reference edge or wavelets
 * (ORBEL_BAD_SETTING). Not for several threads at once on one stack. After a status but ORBEL_OK the stack takes no
 * more lines and is good for orbel_stack_free alone, but ORBEL_BAD_ARGUMENT and ORBEL_BAD_PICTURE leave it as it was.
 */
ORBEL_API orbel_status orbel_stack_begin(const orbel_settings* settings, const orbel_picture* shape,
                                         const orbel_options* options, orbel_stack** stack);
ORBEL_API orbel_status orbel_stack_add(orbel_stack* stack, const orbel_picture* lines, const orbel_options* options);

/* A stack weighed: ready to put any part of the picture together. */
typedef struct orbel_look orbel_look;

/* Weighs a stack with the settings' gains and residual, for results with their half, limit, overlay and mix.
 * ORBEL_BAD_SETTING where radii, thresholds, edges, luminance, reference edge or form aren't those that the stack was
 * made with. The stack outlives the look. With a reference edge the cost doesn't depend on the picture's size. */
ORBEL_API orbel_status orbel_look_create(const orbel_stack* stack, const orbel_settings* settings,
                                         const orbel_options* options, orbel_look** look);

/* The same for the stack's picture in another size: handed the picture reduced by area means, or enlarged, it gives the
 * result so reduced or enlarged, up to what is clipped and to single precision where bands are interpolated: for a view
 * that fits a window, or a thumbnail. Wants a reference edge or wavelets (ORBEL_BAD_SETTING). The overlay shrinks and
 * grows with the picture. */
ORBEL_API orbel_status orbel_look_create_in_size(const orbel_stack* stack, const orbel_settings* settings,
                                                 int32_t width, int32_t height, const orbel_options* options,
                                                 orbel_look** look);

/* Puts a part of the picture together, whose first sample is in this column and row of the whole: source is that part
 * of the picture that the stack was made of, in the look's size, and target gets the same part of what orbel_equalize
 * gives, sample for sample where that is the picture's own size. The mask is the part's, too. Otherwise as
 * orbel_equalize. */
ORBEL_API orbel_status orbel_look_render(const orbel_look* look, int32_t column, int32_t row,
                                         const orbel_picture* source, const orbel_picture* target,
                                         const orbel_options* options);

/* Null is fine. */
ORBEL_API void orbel_look_free(orbel_look* look);

/* Both at once, for the whole picture. */
ORBEL_API orbel_status orbel_stack_weigh(const orbel_stack* stack, const orbel_settings* settings,
                                         const orbel_picture* source, const orbel_picture* target,
                                         const orbel_options* options);

/* Band 0 to 4 of the stack, or the residual (ORBEL_BANDS), at a gain of 100, of the whole picture: of luminance as one
 * channel, else as one channel a colour, without alpha. Of the options threads and message count. A band lies around 0,
 * and in a target of integers around middle grey. All bands and the residual add up to the picture, or its luminance,
 * up to rounding; with a reference edge the finest band has all detail that is finer than the reference size. Not in
 * the pyramid at the picture's own size where a side has 32 samples or fewer: nothing can be resized from its last
 * level, and a band is what a run gives whose other gains are 0. */
ORBEL_API orbel_status orbel_stack_band(const orbel_stack* stack, int32_t band, const orbel_picture* source,
                                        const orbel_picture* target, const orbel_options* options);

/* Null is fine. */
ORBEL_API void orbel_stack_free(orbel_stack* stack);

#ifdef __cplusplus
}
#endif

#endif
