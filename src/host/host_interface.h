// The host's side of the plug-in interface: its records, procedure tables, signatures and codes.
//
// The layout is that of 64-bit Windows, and is the same on x86-64 Linux. Every offset and size is held by an assertion.
// FilterRecord, and no other record, is packed to 4 bytes: never take the address of one of its pointers or bind a
// reference to it, they may lie across an alignment boundary. A host's FilterRecord may be shorter than the one
// declared here: never copy, clear or measure one that a host owns. What the filter never calls is declared as a plain
// address. Everything here follows the platform's C calling convention.
#pragma once

#include <cstddef>
#include <cstdint>

#include "equalizer/four_characters.h"

// ---- Small types --------------------------------------------------------------------------------------------------

using Boolean = unsigned char;  // non-zero is true
using OSErr = std::int16_t;     // 0 is success
using OSType = std::uint32_t;   // four characters, the first in the top byte
using Fixed = std::int32_t;     // 16.16
using Ptr = char*;
using Handle = char**;  // *handle is the block's address

using DescriptorKeyID = OSType;
using DescriptorTypeID = OSType;
using DescriptorUnitID = OSType;
using DescriptorClassID = OSType;
using DescriptorEnumID = OSType;
using DescriptorEnumTypeID = OSType;
using PIDescriptorHandle = Handle;

// Tokens of a descriptor being read or written; null means none.
using PIReadDescriptor = struct PIReadDescriptorToken*;
using PIWriteDescriptor = struct PIWriteDescriptorToken*;

struct Point {
  std::int16_t v, h;
};
struct Rect {
  std::int16_t top, left, bottom, right;
};
struct VPoint {
  std::int32_t v, h;
};
struct VRect {
  std::int32_t top, left, bottom, right;
};
struct RGBColor {
  std::uint16_t red, green, blue;
};
struct PlugInMonitor {
  Fixed gamma, redX, redY, greenX, greenY, blueX, blueY, whiteX, whiteY, ambient;
};

// ---- Codes --------------------------------------------------------------------------------------------------------

enum : std::int16_t {
  filterSelectorAbout = 0,  // the only selector whose record is an AboutRecord
  filterSelectorParameters = 1,
  filterSelectorPrepare = 2,
  filterSelectorStart = 3,
  filterSelectorContinue = 4,
  filterSelectorFinish = 5,
};

enum : OSErr {
  noErr = 0,
  paramErr = -50,
  memFullErr = -108,
  nilHandleErr = -109,
  userCanceledErr = -128,
  errMissingParameter = -1715,  // closing a reader: an expected key was not in the descriptor
  filterBadParameters = -30100,
  filterBadMode = -30101,
  errPlugInHostInsufficient = -30900,
  errPlugInPropertyUndefined = -30901,
  errReportString = -30904,  // the message is in errorString
};

enum : std::int16_t {  // FilterRecord.imageMode
  plugInModeRGBColor = 3,
  plugInModeRGB48 = 11,
  plugInModeRGB96 = 16,
};

enum : std::int16_t { plugInDialogDontDisplay = 0, plugInDialogDisplay = 1, plugInDialogSilent = 2 };  // playInfo
enum : std::int16_t {                                                                                  // recordInfo
  plugInDialogOptional = 0,
  plugInDialogRequired = 1,
  plugInDialogNone = 2
};

enum : std::int32_t {  // flags from getKeyProc
  actionSimpleParameter = 0,
  actionEnumeratedParameter = 0x2000,
  actionListParameter = 0x4000,
  actionOptionalParameter = 0x8000,
};

constexpr DescriptorTypeID typeFloat = fourCharacters("doub");
constexpr DescriptorTypeID typeBoolean = fourCharacters("bool");
constexpr DescriptorTypeID typeInteger = fourCharacters("long");
constexpr DescriptorTypeID typeNull = fourCharacters("null");
constexpr DescriptorTypeID typeUnitFloat = fourCharacters("UntF");
constexpr DescriptorTypeID typeText = fourCharacters("TEXT");
constexpr DescriptorTypeID typeObject = fourCharacters("Objc");
constexpr DescriptorTypeID typeClass = fourCharacters("type");
constexpr DescriptorTypeID typeEnumerated = fourCharacters("enum");

constexpr OSType photoshopSignature = fourCharacters("8BIM");

constexpr const char* kPSChannelPortsSuite = "Photoshop ChannelPorts Suite for Plug-ins";
constexpr std::int32_t kPSChannelPortsSuiteVersion3 = 3;
constexpr const char* kPSBufferSuite = "Photoshop Buffer Suite for Plug-ins";
constexpr std::int32_t kPSBufferSuiteVersion2 = 2;

constexpr std::int32_t white16 = 32768;  // the sample value of white at 16 bits

// ---- Handles ------------------------------------------------------------------------------------------------------

struct HandleProcs {
  std::int16_t handleProcsVersion;  // 1
  std::int16_t numHandleProcs;      // 8
  Handle (*newProc)(std::int32_t size);
  void (*disposeProc)(Handle);
  std::int32_t (*getSizeProc)(Handle);
  OSErr (*setSizeProc)(Handle, std::int32_t newSize);
  Ptr (*lockProc)(Handle, Boolean moveHigh);  // gives the block's address
  void (*unlockProc)(Handle);
  void (*recoverSpaceProc)(std::int32_t size);
  void (*disposeRegularHandleProc)(Handle);
};

// ---- Script descriptors -------------------------------------------------------------------------------------------

struct PIDescriptorSimpleReference {
  DescriptorTypeID desiredClass;
  DescriptorKeyID keyForm;
  unsigned char name[256];  // Pascal string
  std::int32_t index;
  DescriptorEnumTypeID type;
  DescriptorEnumID value;
};

struct WriteDescriptorProcs {
  std::int16_t writeDescriptorProcsVersion;  // 0
  std::int16_t numWriteDescriptorProcs;      // 16
  PIWriteDescriptor (*openWriteDescriptorProc)();
  OSErr (*closeWriteDescriptorProc)(PIWriteDescriptor, PIDescriptorHandle* descriptor);  // receives the new handle
  OSErr (*putIntegerProc)(PIWriteDescriptor, DescriptorKeyID, std::int32_t value);
  OSErr (*putFloatProc)(PIWriteDescriptor, DescriptorKeyID, const double* value);  // the address, not the value
  OSErr (*putUnitFloatProc)(PIWriteDescriptor, DescriptorKeyID, DescriptorUnitID, const double* value);
  OSErr (*putBooleanProc)(PIWriteDescriptor, DescriptorKeyID, Boolean value);
  OSErr (*putTextProc)(PIWriteDescriptor, DescriptorKeyID, Handle text);
  OSErr (*putAliasProc)(PIWriteDescriptor, DescriptorKeyID, Handle alias);
  OSErr (*putEnumeratedProc)(PIWriteDescriptor, DescriptorKeyID, DescriptorEnumTypeID, DescriptorEnumID value);
  OSErr (*putClassProc)(PIWriteDescriptor, DescriptorKeyID, DescriptorClassID);
  OSErr (*putSimpleReferenceProc)(PIWriteDescriptor, DescriptorKeyID, const PIDescriptorSimpleReference* value);
  OSErr (*putObjectProc)(PIWriteDescriptor, DescriptorKeyID, DescriptorClassID, PIDescriptorHandle value);
  OSErr (*putCountProc)(PIWriteDescriptor, DescriptorKeyID, std::uint32_t count);
  OSErr (*putStringProc)(PIWriteDescriptor, DescriptorKeyID, const unsigned char* pascalString);
  OSErr (*putScopedClassProc)(PIWriteDescriptor, DescriptorKeyID, DescriptorClassID);
  OSErr (*putScopedObjectProc)(PIWriteDescriptor, DescriptorKeyID, DescriptorClassID, PIDescriptorHandle value);
};

struct ReadDescriptorProcs {
  std::int16_t readDescriptorProcsVersion;  // 0
  std::int16_t numReadDescriptorProcs;      // 18
  // The host writes into expectedKeys while it hands out keys; the array ends with 0 and must outlive the token.
  PIReadDescriptor (*openReadDescriptorProc)(PIDescriptorHandle, DescriptorKeyID* expectedKeys);
  OSErr (*closeReadDescriptorProc)(PIReadDescriptor);
  Boolean (*getKeyProc)(PIReadDescriptor, DescriptorKeyID* key, DescriptorTypeID* type,
                        std::int32_t* flags);  // false at the end
  OSErr (*getIntegerProc)(PIReadDescriptor, std::int32_t* value);
  OSErr (*getFloatProc)(PIReadDescriptor, double* value);
  OSErr (*getUnitFloatProc)(PIReadDescriptor, DescriptorUnitID*, double* value);
  OSErr (*getBooleanProc)(PIReadDescriptor, Boolean* value);
  OSErr (*getTextProc)(PIReadDescriptor, Handle* text);
  OSErr (*getAliasProc)(PIReadDescriptor, Handle* alias);
  OSErr (*getEnumeratedProc)(PIReadDescriptor, DescriptorEnumID* value);
  OSErr (*getClassProc)(PIReadDescriptor, DescriptorClassID*);
  OSErr (*getSimpleReferenceProc)(PIReadDescriptor, PIDescriptorSimpleReference* value);
  OSErr (*getObjectProc)(PIReadDescriptor, DescriptorClassID*, PIDescriptorHandle* value);
  OSErr (*getCountProc)(PIReadDescriptor, std::uint32_t* count);
  OSErr (*getStringProc)(PIReadDescriptor, unsigned char* pascalString);  // 256 bytes
  OSErr (*getPinnedIntegerProc)(PIReadDescriptor, std::int32_t min, std::int32_t max, std::int32_t* value);
  OSErr (*getPinnedFloatProc)(PIReadDescriptor, const double* min, const double* max, double* value);
  OSErr (*getPinnedUnitFloatProc)(PIReadDescriptor, const double* min, const double* max, DescriptorUnitID*,
                                  double* value);
};

struct PIDescriptorParameters {
  std::int16_t descriptorParametersVersion;  // 0
  std::int16_t playInfo;                     // plugInDialogDontDisplay and its neighbours
  std::int16_t recordInfo;                   // plugInDialogOptional and its neighbours
  PIDescriptorHandle descriptor;             // null when there is nothing to play
  WriteDescriptorProcs* writeDescriptorProcs;
  ReadDescriptorProcs* readDescriptorProcs;
};

// ---- Suites -------------------------------------------------------------------------------------------------------

struct SPBasicSuite {
  std::int32_t (*AcquireSuite)(const char* name, std::int32_t version, const void** suite);  // 0 is success
  std::int32_t (*ReleaseSuite)(const char* name, std::int32_t version);
  void* IsEqual;
  std::int32_t (*AllocateBlock)(std::size_t size, void** block);
  std::int32_t (*FreeBlock)(void* block);
  std::int32_t (*ReallocateBlock)(void* block, std::size_t newSize, void** newBlock);
  std::int32_t (*Undefined)();
};

// ---- Records of the entry -----------------------------------------------------------------------------------------

// 32-bit counterparts of the coordinates in FilterRecord.
struct BigDocumentStruct {
  std::int32_t PluginUsing32BitCoordinates;  // non-zero: these members count, not the 16-bit ones
  VPoint imageSize32;
  VRect filterRect32;
  VRect inRect32;
  VRect outRect32;
  VRect maskRect32;
  VPoint floatCoord32;
  VPoint wholeSize32;
};

struct AboutRecord {
  void* platformData;
  SPBasicSuite* sSPBasic;  // may be null
  void* plugInRef;
  char reserved[244];
};

#pragma pack(push, 4)
struct FilterRecord {
  // Progress, the stored record, and what is to be filtered.
  std::int32_t serialNumber;
  Boolean (*abortProc)();  // true when the user wants to stop
  void (*progressProc)(std::int32_t done, std::int32_t total);
  Handle parameters;  // null on the first run; the filter allocates it, the host keeps it
  Point imageSize;
  std::int16_t planes;  // all planes of the document, alpha included
  Rect filterRect;
  RGBColor background;
  RGBColor foreground;
  std::int32_t maxSpace;
  std::int32_t bufferSpace;

  // What the filter asks for.
  Rect inRect;  // inRect, outRect and maskRect all empty end the run's Continue calls
  std::int16_t inLoPlane;
  std::int16_t inHiPlane;
  Rect outRect;
  std::int16_t outLoPlane;
  std::int16_t outHiPlane;

  // What the host delivers at each advanceState. Row steps are in bytes.
  void* inData;
  std::int32_t inRowBytes;
  void* outData;
  std::int32_t outRowBytes;

  // Selection.
  Boolean isFloating;
  Boolean haveMask;
  Boolean autoMask;
  Rect maskRect;
  void* maskData;
  std::int32_t maskRowBytes;

  // Colours, host, document.
  std::uint8_t backColor[4];
  std::uint8_t foreColor[4];
  OSType hostSig;  // '8BIM' in Photoshop
  void (*hostProc)(std::int16_t selector, std::intptr_t* data);
  std::int16_t imageMode;
  Fixed imageHRes;
  Fixed imageVRes;
  Point floatCoord;
  Point wholeSize;
  PlugInMonitor monitor;

  // Services.
  void* platformData;  // a record whose first member is the window handle
  void* bufferProcs;
  void* resourceProcs;
  void (*processEvent)(void* event);
  void* displayPixels;
  HandleProcs* handleProcs;  // may be null

  // Layouts of the exchange, padding and sampling.
  Boolean supportsDummyChannels;
  Boolean supportsAlternateLayouts;
  std::int16_t wantLayout;  // 0: planes side by side in each pixel
  std::int16_t filterCase;  // 1 to 7: selection, floating selection, layers
  std::int16_t dummyPlaneValue;
  void* premiereHook;
  OSErr (*advanceState)();  // delivers inData and outData for the rectangles and planes that are set; may be null
  Boolean supportsAbsolute;
  Boolean wantsAbsolute;
  void* getPropertyObsolete;
  Boolean cannotUndo;
  Boolean supportsPadding;
  std::int16_t inputPadding;
  std::int16_t outputPadding;
  std::int16_t maskPadding;
  std::uint8_t samplingSupport;
  std::uint8_t reservedByte;
  Fixed inputRate;
  Fixed maskRate;
  void* colorServices;

  // Counts of planes by kind.
  std::int16_t inLayerPlanes;
  std::int16_t inTransparencyMask;
  std::int16_t inLayerMasks;
  std::int16_t inInvertedLayerMasks;
  std::int16_t inNonLayerPlanes;
  std::int16_t outLayerPlanes;
  std::int16_t outTransparencyMask;
  std::int16_t outLayerMasks;
  std::int16_t outInvertedLayerMasks;
  std::int16_t outNonLayerPlanes;
  std::int16_t absLayerPlanes;
  std::int16_t absTransparencyMask;
  std::int16_t absLayerMasks;
  std::int16_t absInvertedLayerMasks;
  std::int16_t absNonLayerPlanes;
  std::int16_t inPreDummyPlanes;
  std::int16_t inPostDummyPlanes;
  std::int16_t outPreDummyPlanes;
  std::int16_t outPostDummyPlanes;

  // Steps of alternative layouts, in bytes.
  std::int32_t inColumnBytes;
  std::int32_t inPlaneBytes;
  std::int32_t outColumnBytes;
  std::int32_t outPlaneBytes;

  // Services and tiling.
  void* imageServicesProcs;
  void* propertyProcs;
  std::int16_t inTileHeight;
  std::int16_t inTileWidth;
  Point inTileOrigin;
  std::int16_t absTileHeight;
  std::int16_t absTileWidth;
  Point absTileOrigin;
  std::int16_t outTileHeight;
  std::int16_t outTileWidth;
  Point outTileOrigin;
  std::int16_t maskTileHeight;
  std::int16_t maskTileWidth;
  Point maskTileOrigin;

  // Scripting, suites, depth, profile.
  PIDescriptorParameters* descriptorParameters;  // may be null, and so may its two tables
  std::uint8_t* errorString;                     // 256 bytes, a Pascal string
  void* channelPortProcs;
  void* documentInfo;
  SPBasicSuite* sSPBasic;  // may be null
  void* plugInRef;
  std::int32_t depth;  // bits a sample: 8, 16 or 32 (1 in bitmaps)
  Handle iCCprofileData;
  std::int32_t iCCprofileSize;
  std::int32_t canUseICCProfiles;
  std::int32_t hasImageScrap;
  BigDocumentStruct* bigDocumentData;  // null in hosts without large documents

  unsigned char reserved[512];  // room for what younger hosts have here; the filter never looks at it
};
#pragma pack(pop)

// The module's one export. paramBlock is an AboutRecord for filterSelectorAbout, else a FilterRecord.
using PluginMainProc = void (*)(std::int16_t selector, void* paramBlock, std::intptr_t* data, std::int16_t* result);

// ---- The layout ---------------------------------------------------------------------------------------------------

// NOLINTBEGIN(bugprone-sizeof-expression): the size of a pointer is what is meant.
#define LAID_OUT(record, field, offset, size)                              \
  static_assert(offsetof(record, field) == (offset), #record "::" #field); \
  static_assert(sizeof(record::field) == (size), "size of " #record "::" #field)

static_assert(sizeof(void*) == 8, "the layout is that of 64-bit hosts");
static_assert(sizeof(Point) == 4 && sizeof(Rect) == 8 && sizeof(VPoint) == 8 && sizeof(VRect) == 16);
LAID_OUT(Point, v, 0, 2);
LAID_OUT(Point, h, 2, 2);
LAID_OUT(Rect, top, 0, 2);
LAID_OUT(Rect, left, 2, 2);
LAID_OUT(Rect, bottom, 4, 2);
LAID_OUT(Rect, right, 6, 2);
LAID_OUT(VPoint, v, 0, 4);
LAID_OUT(VPoint, h, 4, 4);
LAID_OUT(VRect, top, 0, 4);
LAID_OUT(VRect, left, 4, 4);
LAID_OUT(VRect, bottom, 8, 4);
LAID_OUT(VRect, right, 12, 4);

LAID_OUT(HandleProcs, handleProcsVersion, 0, 2);
LAID_OUT(HandleProcs, numHandleProcs, 2, 2);
LAID_OUT(HandleProcs, newProc, 8, 8);
LAID_OUT(HandleProcs, disposeProc, 16, 8);
LAID_OUT(HandleProcs, getSizeProc, 24, 8);
LAID_OUT(HandleProcs, setSizeProc, 32, 8);
LAID_OUT(HandleProcs, lockProc, 40, 8);
LAID_OUT(HandleProcs, unlockProc, 48, 8);
LAID_OUT(HandleProcs, recoverSpaceProc, 56, 8);
LAID_OUT(HandleProcs, disposeRegularHandleProc, 64, 8);
static_assert(sizeof(HandleProcs) == 72);

LAID_OUT(PIDescriptorSimpleReference, desiredClass, 0, 4);
LAID_OUT(PIDescriptorSimpleReference, keyForm, 4, 4);
LAID_OUT(PIDescriptorSimpleReference, name, 8, 256);
LAID_OUT(PIDescriptorSimpleReference, index, 264, 4);
LAID_OUT(PIDescriptorSimpleReference, type, 268, 4);
LAID_OUT(PIDescriptorSimpleReference, value, 272, 4);
static_assert(sizeof(PIDescriptorSimpleReference) == 276);

LAID_OUT(WriteDescriptorProcs, writeDescriptorProcsVersion, 0, 2);
LAID_OUT(WriteDescriptorProcs, numWriteDescriptorProcs, 2, 2);
LAID_OUT(WriteDescriptorProcs, openWriteDescriptorProc, 8, 8);
LAID_OUT(WriteDescriptorProcs, closeWriteDescriptorProc, 16, 8);
LAID_OUT(WriteDescriptorProcs, putIntegerProc, 24, 8);
LAID_OUT(WriteDescriptorProcs, putFloatProc, 32, 8);
LAID_OUT(WriteDescriptorProcs, putUnitFloatProc, 40, 8);
LAID_OUT(WriteDescriptorProcs, putBooleanProc, 48, 8);
LAID_OUT(WriteDescriptorProcs, putTextProc, 56, 8);
LAID_OUT(WriteDescriptorProcs, putAliasProc, 64, 8);
LAID_OUT(WriteDescriptorProcs, putEnumeratedProc, 72, 8);
LAID_OUT(WriteDescriptorProcs, putClassProc, 80, 8);
LAID_OUT(WriteDescriptorProcs, putSimpleReferenceProc, 88, 8);
LAID_OUT(WriteDescriptorProcs, putObjectProc, 96, 8);
LAID_OUT(WriteDescriptorProcs, putCountProc, 104, 8);
LAID_OUT(WriteDescriptorProcs, putStringProc, 112, 8);
LAID_OUT(WriteDescriptorProcs, putScopedClassProc, 120, 8);
LAID_OUT(WriteDescriptorProcs, putScopedObjectProc, 128, 8);
static_assert(sizeof(WriteDescriptorProcs) == 136);

LAID_OUT(ReadDescriptorProcs, readDescriptorProcsVersion, 0, 2);
LAID_OUT(ReadDescriptorProcs, numReadDescriptorProcs, 2, 2);
LAID_OUT(ReadDescriptorProcs, openReadDescriptorProc, 8, 8);
LAID_OUT(ReadDescriptorProcs, closeReadDescriptorProc, 16, 8);
LAID_OUT(ReadDescriptorProcs, getKeyProc, 24, 8);
LAID_OUT(ReadDescriptorProcs, getIntegerProc, 32, 8);
LAID_OUT(ReadDescriptorProcs, getFloatProc, 40, 8);
LAID_OUT(ReadDescriptorProcs, getUnitFloatProc, 48, 8);
LAID_OUT(ReadDescriptorProcs, getBooleanProc, 56, 8);
LAID_OUT(ReadDescriptorProcs, getTextProc, 64, 8);
LAID_OUT(ReadDescriptorProcs, getAliasProc, 72, 8);
LAID_OUT(ReadDescriptorProcs, getEnumeratedProc, 80, 8);
LAID_OUT(ReadDescriptorProcs, getClassProc, 88, 8);
LAID_OUT(ReadDescriptorProcs, getSimpleReferenceProc, 96, 8);
LAID_OUT(ReadDescriptorProcs, getObjectProc, 104, 8);
LAID_OUT(ReadDescriptorProcs, getCountProc, 112, 8);
LAID_OUT(ReadDescriptorProcs, getStringProc, 120, 8);
LAID_OUT(ReadDescriptorProcs, getPinnedIntegerProc, 128, 8);
LAID_OUT(ReadDescriptorProcs, getPinnedFloatProc, 136, 8);
LAID_OUT(ReadDescriptorProcs, getPinnedUnitFloatProc, 144, 8);
static_assert(sizeof(ReadDescriptorProcs) == 152);

LAID_OUT(PIDescriptorParameters, descriptorParametersVersion, 0, 2);
LAID_OUT(PIDescriptorParameters, playInfo, 2, 2);
LAID_OUT(PIDescriptorParameters, recordInfo, 4, 2);
LAID_OUT(PIDescriptorParameters, descriptor, 8, 8);
LAID_OUT(PIDescriptorParameters, writeDescriptorProcs, 16, 8);
LAID_OUT(PIDescriptorParameters, readDescriptorProcs, 24, 8);
static_assert(sizeof(PIDescriptorParameters) == 32);

LAID_OUT(SPBasicSuite, AcquireSuite, 0, 8);
LAID_OUT(SPBasicSuite, ReleaseSuite, 8, 8);
LAID_OUT(SPBasicSuite, IsEqual, 16, 8);
LAID_OUT(SPBasicSuite, AllocateBlock, 24, 8);
LAID_OUT(SPBasicSuite, FreeBlock, 32, 8);
LAID_OUT(SPBasicSuite, ReallocateBlock, 40, 8);
LAID_OUT(SPBasicSuite, Undefined, 48, 8);
static_assert(sizeof(SPBasicSuite) == 56);

LAID_OUT(BigDocumentStruct, PluginUsing32BitCoordinates, 0, 4);
LAID_OUT(BigDocumentStruct, imageSize32, 4, 8);
LAID_OUT(BigDocumentStruct, filterRect32, 12, 16);
LAID_OUT(BigDocumentStruct, inRect32, 28, 16);
LAID_OUT(BigDocumentStruct, outRect32, 44, 16);
LAID_OUT(BigDocumentStruct, maskRect32, 60, 16);
LAID_OUT(BigDocumentStruct, floatCoord32, 76, 8);
LAID_OUT(BigDocumentStruct, wholeSize32, 84, 8);
static_assert(sizeof(BigDocumentStruct) == 92);

static_assert(alignof(BigDocumentStruct) == 4);
LAID_OUT(AboutRecord, platformData, 0, 8);
LAID_OUT(AboutRecord, sSPBasic, 8, 8);
LAID_OUT(AboutRecord, plugInRef, 16, 8);
LAID_OUT(AboutRecord, reserved, 24, 244);
static_assert(sizeof(AboutRecord) == 272);

LAID_OUT(FilterRecord, serialNumber, 0, 4);
LAID_OUT(FilterRecord, abortProc, 4, 8);
LAID_OUT(FilterRecord, progressProc, 12, 8);
LAID_OUT(FilterRecord, parameters, 20, 8);
LAID_OUT(FilterRecord, imageSize, 28, 4);
LAID_OUT(FilterRecord, planes, 32, 2);
LAID_OUT(FilterRecord, filterRect, 34, 8);
LAID_OUT(FilterRecord, background, 42, 6);
LAID_OUT(FilterRecord, foreground, 48, 6);
LAID_OUT(FilterRecord, maxSpace, 56, 4);
LAID_OUT(FilterRecord, bufferSpace, 60, 4);
LAID_OUT(FilterRecord, inRect, 64, 8);
LAID_OUT(FilterRecord, inLoPlane, 72, 2);
LAID_OUT(FilterRecord, inHiPlane, 74, 2);
LAID_OUT(FilterRecord, outRect, 76, 8);
LAID_OUT(FilterRecord, outLoPlane, 84, 2);
LAID_OUT(FilterRecord, outHiPlane, 86, 2);
LAID_OUT(FilterRecord, inData, 88, 8);
LAID_OUT(FilterRecord, inRowBytes, 96, 4);
LAID_OUT(FilterRecord, outData, 100, 8);
LAID_OUT(FilterRecord, outRowBytes, 108, 4);
LAID_OUT(FilterRecord, isFloating, 112, 1);
LAID_OUT(FilterRecord, haveMask, 113, 1);
LAID_OUT(FilterRecord, autoMask, 114, 1);
LAID_OUT(FilterRecord, maskRect, 116, 8);
LAID_OUT(FilterRecord, maskData, 124, 8);
LAID_OUT(FilterRecord, maskRowBytes, 132, 4);
LAID_OUT(FilterRecord, backColor, 136, 4);
LAID_OUT(FilterRecord, foreColor, 140, 4);
LAID_OUT(FilterRecord, hostSig, 144, 4);
LAID_OUT(FilterRecord, hostProc, 148, 8);
LAID_OUT(FilterRecord, imageMode, 156, 2);
LAID_OUT(FilterRecord, imageHRes, 160, 4);
LAID_OUT(FilterRecord, imageVRes, 164, 4);
LAID_OUT(FilterRecord, floatCoord, 168, 4);
LAID_OUT(FilterRecord, wholeSize, 172, 4);
LAID_OUT(FilterRecord, monitor, 176, 40);
LAID_OUT(FilterRecord, platformData, 216, 8);
LAID_OUT(FilterRecord, bufferProcs, 224, 8);
LAID_OUT(FilterRecord, resourceProcs, 232, 8);
LAID_OUT(FilterRecord, processEvent, 240, 8);
LAID_OUT(FilterRecord, displayPixels, 248, 8);
LAID_OUT(FilterRecord, handleProcs, 256, 8);
LAID_OUT(FilterRecord, supportsDummyChannels, 264, 1);
LAID_OUT(FilterRecord, supportsAlternateLayouts, 265, 1);
LAID_OUT(FilterRecord, wantLayout, 266, 2);
LAID_OUT(FilterRecord, filterCase, 268, 2);
LAID_OUT(FilterRecord, dummyPlaneValue, 270, 2);
LAID_OUT(FilterRecord, premiereHook, 272, 8);
LAID_OUT(FilterRecord, advanceState, 280, 8);
LAID_OUT(FilterRecord, supportsAbsolute, 288, 1);
LAID_OUT(FilterRecord, wantsAbsolute, 289, 1);
LAID_OUT(FilterRecord, getPropertyObsolete, 292, 8);
LAID_OUT(FilterRecord, cannotUndo, 300, 1);
LAID_OUT(FilterRecord, supportsPadding, 301, 1);
LAID_OUT(FilterRecord, inputPadding, 302, 2);
LAID_OUT(FilterRecord, outputPadding, 304, 2);
LAID_OUT(FilterRecord, maskPadding, 306, 2);
LAID_OUT(FilterRecord, samplingSupport, 308, 1);
LAID_OUT(FilterRecord, reservedByte, 309, 1);
LAID_OUT(FilterRecord, inputRate, 312, 4);
LAID_OUT(FilterRecord, maskRate, 316, 4);
LAID_OUT(FilterRecord, colorServices, 320, 8);
LAID_OUT(FilterRecord, inLayerPlanes, 328, 2);
LAID_OUT(FilterRecord, inTransparencyMask, 330, 2);
LAID_OUT(FilterRecord, inLayerMasks, 332, 2);
LAID_OUT(FilterRecord, inInvertedLayerMasks, 334, 2);
LAID_OUT(FilterRecord, inNonLayerPlanes, 336, 2);
LAID_OUT(FilterRecord, outLayerPlanes, 338, 2);
LAID_OUT(FilterRecord, outTransparencyMask, 340, 2);
LAID_OUT(FilterRecord, outLayerMasks, 342, 2);
LAID_OUT(FilterRecord, outInvertedLayerMasks, 344, 2);
LAID_OUT(FilterRecord, outNonLayerPlanes, 346, 2);
LAID_OUT(FilterRecord, absLayerPlanes, 348, 2);
LAID_OUT(FilterRecord, absTransparencyMask, 350, 2);
LAID_OUT(FilterRecord, absLayerMasks, 352, 2);
LAID_OUT(FilterRecord, absInvertedLayerMasks, 354, 2);
LAID_OUT(FilterRecord, absNonLayerPlanes, 356, 2);
LAID_OUT(FilterRecord, inPreDummyPlanes, 358, 2);
LAID_OUT(FilterRecord, inPostDummyPlanes, 360, 2);
LAID_OUT(FilterRecord, outPreDummyPlanes, 362, 2);
LAID_OUT(FilterRecord, outPostDummyPlanes, 364, 2);
LAID_OUT(FilterRecord, inColumnBytes, 368, 4);
LAID_OUT(FilterRecord, inPlaneBytes, 372, 4);
LAID_OUT(FilterRecord, outColumnBytes, 376, 4);
LAID_OUT(FilterRecord, outPlaneBytes, 380, 4);
LAID_OUT(FilterRecord, imageServicesProcs, 384, 8);
LAID_OUT(FilterRecord, propertyProcs, 392, 8);
LAID_OUT(FilterRecord, inTileHeight, 400, 2);
LAID_OUT(FilterRecord, inTileWidth, 402, 2);
LAID_OUT(FilterRecord, inTileOrigin, 404, 4);
LAID_OUT(FilterRecord, absTileHeight, 408, 2);
LAID_OUT(FilterRecord, absTileWidth, 410, 2);
LAID_OUT(FilterRecord, absTileOrigin, 412, 4);
LAID_OUT(FilterRecord, outTileHeight, 416, 2);
LAID_OUT(FilterRecord, outTileWidth, 418, 2);
LAID_OUT(FilterRecord, outTileOrigin, 420, 4);
LAID_OUT(FilterRecord, maskTileHeight, 424, 2);
LAID_OUT(FilterRecord, maskTileWidth, 426, 2);
LAID_OUT(FilterRecord, maskTileOrigin, 428, 4);
LAID_OUT(FilterRecord, descriptorParameters, 432, 8);
LAID_OUT(FilterRecord, errorString, 440, 8);
LAID_OUT(FilterRecord, channelPortProcs, 448, 8);
LAID_OUT(FilterRecord, documentInfo, 456, 8);
LAID_OUT(FilterRecord, sSPBasic, 464, 8);
LAID_OUT(FilterRecord, plugInRef, 472, 8);
LAID_OUT(FilterRecord, depth, 480, 4);
LAID_OUT(FilterRecord, iCCprofileData, 484, 8);
LAID_OUT(FilterRecord, iCCprofileSize, 492, 4);
LAID_OUT(FilterRecord, canUseICCProfiles, 496, 4);
LAID_OUT(FilterRecord, hasImageScrap, 500, 4);
LAID_OUT(FilterRecord, bigDocumentData, 504, 8);
LAID_OUT(FilterRecord, reserved, 512, 512);
static_assert(sizeof(FilterRecord) == 1024 && alignof(FilterRecord) == 4);

#undef LAID_OUT
// NOLINTEND(bugprone-sizeof-expression)
