// Which procedure tables are taken, and what the wrappers do with one that isn't.
#include "host/host_services.h"

#include <gtest/gtest.h>

#include <cstring>
#include <functional>

#include "host/filter_run.h"
#include "host/test_host.h"

namespace {

TEST(HandleProcsTest, VersionCountAndFirstFourProceduresDecide) {
  struct Case {
    std::function<void(HandleProcs&)> bend;
    bool available, newer;
  };
  const Case cases[] = {{[](HandleProcs&) {}, true, false},
                        {[](HandleProcs& p) { p.numHandleProcs = 9; }, true, false},
                        {[](HandleProcs& p) { p.lockProc = nullptr, p.unlockProc = nullptr; }, true, false},
                        {[](HandleProcs& p) { p.numHandleProcs = 7; }, false, false},
                        {[](HandleProcs& p) { p.handleProcsVersion = 0; }, false, false},
                        {[](HandleProcs& p) { p.handleProcsVersion = 2; }, false, true},
                        {[](HandleProcs& p) { p.newProc = nullptr; }, false, false},
                        {[](HandleProcs& p) { p.disposeProc = nullptr; }, false, false},
                        {[](HandleProcs& p) { p.getSizeProc = nullptr; }, false, false},
                        {[](HandleProcs& p) { p.setSizeProc = nullptr; }, false, false}};
  for (const Case& c : cases) {
    TestHost host(1, 1, 3, 8);
    c.bend(host.handles);
    Boolean newer = 0;
    EXPECT_EQ(HostHandleProcsAvailable(&host.handles, &newer), c.available) << &c - cases;
    EXPECT_EQ(newer != 0, c.newer) << &c - cases;
    EXPECT_EQ(HostHandleProcsAvailable(&host.handles, nullptr), c.available);
    if (c.available) continue;
    EXPECT_EQ(HostNewHandle(&host.handles, 8), nullptr);
    Handle handle = host.newHandle(8);
    EXPECT_EQ(HostLockHandle(&host.handles, handle, 1), nullptr);
    HostUnlockHandle(&host.handles, handle);
    HostDisposeHandle(&host.handles, handle);
    EXPECT_EQ(host.liveHandles(), 1);
    EXPECT_TRUE(host.calls.empty());
  }
  EXPECT_FALSE(HostHandleProcsAvailable(nullptr, nullptr));
  EXPECT_EQ(HostNewHandle(nullptr, 8), nullptr);
}

TEST(HandleProcsTest, NullLockAndUnlock) {
  TestHost host(1, 1, 3, 8);
  host.handles.lockProc = nullptr;
  host.handles.unlockProc = nullptr;
  Handle handle = HostNewHandle(&host.handles, 8);
  EXPECT_EQ(HostLockHandle(&host.handles, handle, 1), nullptr);
  HostUnlockHandle(&host.handles, handle);
  HostDisposeHandle(&host.handles, handle);
  EXPECT_EQ(host.liveHandles(), 0);
}

TEST(DescriptorTest, VersionsAndCountsDecide) {
  struct Case {
    std::function<void(TestHost&)> bend;
    bool available, newer;
  };
  const Case cases[] = {{[](TestHost&) {}, true, false},
                        {[](TestHost& h) { h.reading.numReadDescriptorProcs = 19; }, true, false},
                        {[](TestHost& h) { h.scripting.descriptorParametersVersion = -1; }, false, false},
                        {[](TestHost& h) { h.scripting.descriptorParametersVersion = 1; }, false, true},
                        {[](TestHost& h) { h.reading.readDescriptorProcsVersion = 1; }, false, true},
                        {[](TestHost& h) { h.writing.writeDescriptorProcsVersion = 1; }, false, true},
                        {[](TestHost& h) { h.reading.readDescriptorProcsVersion = -1; }, false, false},
                        {[](TestHost& h) { h.writing.writeDescriptorProcsVersion = -1; }, false, false},
                        {[](TestHost& h) { h.scripting.readDescriptorProcs = nullptr; }, false, false},
                        {[](TestHost& h) { h.scripting.writeDescriptorProcs = nullptr; }, false, false},
                        {[](TestHost& h) {
                           h.scripting.readDescriptorProcs = nullptr;
                           h.writing.writeDescriptorProcsVersion = 1;
                         },
                         false, true},
                        {[](TestHost& h) { h.reading.numReadDescriptorProcs = 17; }, false, false},
                        {[](TestHost& h) { h.writing.numWriteDescriptorProcs = 15; }, false, false}};
  for (const Case& c : cases) {
    TestHost host(1, 1, 3, 8);
    c.bend(host);
    Boolean newer = 0;
    EXPECT_EQ(HostDescriptorAvailable(&host.scripting, &newer), c.available) << &c - cases;
    EXPECT_EQ(newer != 0, c.newer) << &c - cases;
    EXPECT_EQ(HostDescriptorAvailable(&host.scripting, nullptr), c.available);
  }
  EXPECT_FALSE(HostDescriptorAvailable(nullptr, nullptr));
}

TEST(DescriptorTest, EveryProcedureHasToBeThere) {
  for (int i = 0; i < 18 + 16; ++i) {
    TestHost host(1, 1, 3, 8);
    char* table = i < 18 ? reinterpret_cast<char*>(&host.reading) : reinterpret_cast<char*>(&host.writing);
    std::memset(table + 8 + 8 * (i < 18 ? i : i - 18), 0, 8);
    EXPECT_FALSE(HostDescriptorAvailable(&host.scripting, nullptr)) << i;
  }
}

TEST(Rectangles, FollowTheHostsWidth) {
  TestHost host(1, 1, 3, 8);
  gFilterRecord = &host.record;
  host.record.imageSize = {-3, 4};
  host.record.wholeSize = {5, -6};
  host.record.floatCoord = {-7, 8};
  host.record.filterRect = {-1, 2, -32768, 32767};
  host.record.maskRect = {1, 2, 3, 4};
  host.big.imageSize32 = {70000, -70001};
  host.big.wholeSize32 = {70002, 70003};
  host.big.floatCoord32 = {70004, 70005};
  host.big.filterRect32 = {70006, -70007, 70008, 70009};
  const auto list = [](VRect r) { return std::array<std::int32_t, 4>{r.top, r.left, r.bottom, r.right}; };
  using List = std::array<std::int32_t, 4>;
  for (const bool present : {false, true}) {  // present, but with the flag unset: still the narrow ones
    host.record.bigDocumentData = present ? &host.big : nullptr;
    EXPECT_EQ(GetImageSize().v, -3);
    EXPECT_EQ(GetImageSize().h, 4);
    EXPECT_EQ(GetWholeSize().h, -6);
    EXPECT_EQ(GetFloatCoord().v, -7);
    EXPECT_EQ(list(GetFilterRect()), (List{-1, 2, -32768, 32767}));
    EXPECT_EQ(list(GetMaskRect()), (List{1, 2, 3, 4}));
    SetInRect({65536 + 5, -65536 - 2, 0x12348000, 7});
    EXPECT_EQ(list(GetInRect()), (List{5, -2, -32768, 7}));
    EXPECT_EQ(list(host.big.inRect32), (List{0, 0, 0, 0}));
  }
  host.big.PluginUsing32BitCoordinates = 2;
  EXPECT_EQ(GetImageSize().v, 70000);
  EXPECT_EQ(GetImageSize().h, -70001);
  EXPECT_EQ(GetWholeSize().v, 70002);
  EXPECT_EQ(GetFloatCoord().h, 70005);
  EXPECT_EQ(list(GetFilterRect()), (List{70006, -70007, 70008, 70009}));
  SetInRect({1, 2, 3, 100000});
  SetOutRect({4, 5, 6, 100001});
  SetMaskRect({7, 8, 9, 100002});
  EXPECT_EQ(list(GetInRect()), (List{1, 2, 3, 100000}));
  EXPECT_EQ(list(GetOutRect()), (List{4, 5, 6, 100001}));
  EXPECT_EQ(list(GetMaskRect()), (List{7, 8, 9, 100002}));
  EXPECT_EQ(host.record.outRect.right, 0);
}

}  // namespace
