// The host's points and rectangles at both widths.
#include "host/filter_run.h"

namespace {

bool uses32Bits() {
  const BigDocumentStruct* big = gFilterRecord->bigDocumentData;
  return big != nullptr && big->PluginUsing32BitCoordinates != 0;
}

VPoint get(VPoint BigDocumentStruct::*wide, Point FilterRecord::*narrow) {
  if (uses32Bits()) return gFilterRecord->bigDocumentData->*wide;
  const Point point = gFilterRecord->*narrow;
  return {point.v, point.h};
}

VRect get(VRect BigDocumentStruct::*wide, Rect FilterRecord::*narrow) {
  if (uses32Bits()) return gFilterRecord->bigDocumentData->*wide;
  const Rect rect = gFilterRecord->*narrow;
  return {rect.top, rect.left, rect.bottom, rect.right};
}

std::int16_t low16(std::int32_t coordinate) { return static_cast<std::int16_t>(coordinate); }

void set(VRect BigDocumentStruct::*wide, Rect FilterRecord::*narrow, VRect rect) {
  if (uses32Bits()) {
    gFilterRecord->bigDocumentData->*wide = rect;
  } else {
    gFilterRecord->*narrow = {low16(rect.top), low16(rect.left), low16(rect.bottom), low16(rect.right)};
  }
}

}  // namespace

VPoint GetImageSize() { return get(&BigDocumentStruct::imageSize32, &FilterRecord::imageSize); }
VRect GetFilterRect() { return get(&BigDocumentStruct::filterRect32, &FilterRecord::filterRect); }
VRect GetInRect() { return get(&BigDocumentStruct::inRect32, &FilterRecord::inRect); }
void SetInRect(VRect rect) { set(&BigDocumentStruct::inRect32, &FilterRecord::inRect, rect); }
VRect GetOutRect() { return get(&BigDocumentStruct::outRect32, &FilterRecord::outRect); }
void SetOutRect(VRect rect) { set(&BigDocumentStruct::outRect32, &FilterRecord::outRect, rect); }
VRect GetMaskRect() { return get(&BigDocumentStruct::maskRect32, &FilterRecord::maskRect); }
void SetMaskRect(VRect rect) { set(&BigDocumentStruct::maskRect32, &FilterRecord::maskRect, rect); }
VPoint GetFloatCoord() { return get(&BigDocumentStruct::floatCoord32, &FilterRecord::floatCoord); }
VPoint GetWholeSize() { return get(&BigDocumentStruct::wholeSize32, &FilterRecord::wholeSize); }
