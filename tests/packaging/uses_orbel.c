/* Doubles the finest detail of a picture in memory, C and C++ alike. */
#include <orbel.h>
#include <stdio.h>

static unsigned char pixels[64][64][3]; /* a bright spot in the dark */

int main(void) {
  pixels[32][32][1] = 100;

  orbel_settings settings;
  orbel_settings_init(&settings, sizeof settings);
  settings.bands[0].gain = 200;

  orbel_picture picture;
  orbel_picture_interleaved(&picture, sizeof picture, ORBEL_UINT8, 64, 64, 3, pixels, sizeof pixels[0]);

  orbel_status status = orbel_equalize(&settings, &picture, &picture, NULL);
  printf("orbel %s: %s; the spot was 100 and is %d\n", orbel_version(), orbel_status_text(status), pixels[32][32][1]);
  return status == ORBEL_OK && pixels[32][32][1] > 140 ? 0 : 1;
}
