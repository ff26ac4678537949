// picture_as_ppm PICTURE PICTURE.ppm: any picture's first three planes with 8 bits, for programs that read nothing
// else.
#include <cstdio>
#include <vips/vips8>

int main(int count, char** arguments) try {
  if (count != 3 || VIPS_INIT(arguments[0]) != 0) return 2;
  const vips::VImage picture = vips::VImage::new_from_file(arguments[1]);
  picture.extract_band(0, vips::VImage::option()->set("n", 3)).cast(VIPS_FORMAT_UCHAR).ppmsave(arguments[2]);
  return 0;
} catch (const vips::VError& error) {
  std::fprintf(stderr, "picture_as_ppm: %s\n", error.what());
  return 1;
}
