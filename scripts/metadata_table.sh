#!/usr/bin/env bash
# The table of docs/metadata.md: a tagged picture in each format goes through orbel into each format, and exiftool looks
# which of the tags are there afterwards. Needs libimage-exiftool-perl and a built orbel.
set -eu
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
orbel=$root/build/release/orbel
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"

tags=(Make ISO LensModel SerialNumber GPSLatitude Orientation Title Rating City Keywords Caption ProfileDescription)
groups=(-IFD0:Make -ExifIFD:ISO -ExifIFD:LensModel -ExifIFD:SerialNumber -GPS:GPSLatitude -IFD0:Orientation
  -XMP-dc:Title -XMP-xmp:Rating -IPTC:City -IPTC:Keywords -IPTC:Caption-Abstract -ICC_Profile:ProfileDescription)

# The tags that file $2 has no more with the values of file $1.
missing() {
  local tag i lost=""
  for i in "${!tags[@]}"; do
    tag=$(exiftool -s3 -n "${groups[$i]}" "$1" 2>/dev/null || true)
    [ -z "$tag" ] || [ "$tag" = "$(exiftool -s3 -n "${groups[$i]}" "$2" 2>/dev/null)" ] || lost="$lost ${tags[$i]}"
  done
  echo "${lost:- none}" | sed "s/ //; s/ /, /g; s/Make, ISO, LensModel, SerialNumber, GPSLatitude/EXIF/; s/Title, Rating/XMP/; s/City, Keywords, Caption/IPTC/"
}

# examples/chelsea.png has a colour profile.
"$orbel" "$root/examples/chelsea.png" tagged.jpg -q
exiftool -q -overwrite_original -Make=Acme -ISO=200 -LensModel='50 mm f/1.4' -SerialNumber=12345 -GPSLatitude=52.5 \
  -GPSLatitudeRef=N -GPSLongitude=13.4 -GPSLongitudeRef=E '-Orientation#=6' -XMP-dc:Title='猫 و قطة' -XMP-xmp:Rating=4 \
  -IPTC:CodedCharacterSet=UTF8 -IPTC:City=Łódź -IPTC:Keywords=東京 -IPTC:Keywords=größe \
  -IPTC:Caption-Abstract='Γειά, привет, שלום, नमस्ते' tagged.jpg
for format in png tif webp; do "$orbel" tagged.jpg "tagged.$format" -q; done

echo "| from | into | lost with exiftool | lost without |"
echo "|---|---|---|---|"
for from in jpg png tif webp; do
  for into in jpg png tif webp; do
    "$orbel" "tagged.$from" "with.$into" -f -q
    PATH=/nowhere "$orbel" "tagged.$from" "without.$into" -f -q
    echo "| $from | $into | $(missing "tagged.$from" "with.$into") | $(missing "tagged.$from" "without.$into") |"
  done
done
