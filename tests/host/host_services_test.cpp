// Which procedure tables are taken, and where the host's rectangles are found.
#include "host/host_services.h"

#include <gtest/gtest.h>

#include <cstring>
#include <functional>

#include "host/filter_run.h"
#include "host/test_host.h"

namespace {

enum class Table { Taken, NotTaken, Newer };

struct Case {
  std::function<void(TestHost&)> bend;
  Table table;
};

void expectTables(const std::vector<Case>& cases, bool (*available)(TestHost& host, Boolean* newer)) {
  for (const Case& c : cases) {
    SCOPED_TRACE(&c - cases.data());
    TestHost host(1, 1, 3, 8);
    c.bend(host);
    Boolean newer = 0;
    EXPECT_EQ(available(host, &newer), c.table == Table::Taken);
    EXPECT_EQ(newer != 0, c.table == Table::Newer);
    EXPECT_EQ(available(host, nullptr), c.table == Table::Taken);
  }
}

void removeProcedure(void* table, int position) { std::memset(static_cast<char*>(table) + 8 + 8 * position, 0, 8); }

TEST(HandleProcsTest, VersionCountAndFirstFourProceduresDecide) {
  std::vector<Case> cases = {{[](TestHost& h) { h.handles.numHandleProcs = 9; }, Table::Taken},
                             {[](TestHost& h) { h.handles.numHandleProcs = 7; }, Table::NotTaken},
                             {[](TestHost& h) { h.handles.handleProcsVersion = 0; }, Table::NotTaken},
                             {[](TestHost& h) { h.handles.handleProcsVersion = 2; }, Table::Newer},
                             {[](TestHost& h) { h.record.handleProcs = nullptr; }, Table::NotTaken}};
  for (int i = 0; i < 8; ++i) {
    cases.push_back({[i](TestHost& h) { removeProcedure(&h.handles, i); }, i < 4 ? Table::NotTaken : Table::Taken});
  }
  expectTables(cases,
               [](TestHost& h, Boolean* newer) { return HostHandleProcsAvailable(h.record.handleProcs, newer); });
}

TEST(HandleProcsTest, NothingIsDoneWithATableThatIsNotTaken) {
  for (std::int16_t count = 7; count < 9; ++count) {
    TestHost host(1, 1, 3, 8);
    host.handles.numHandleProcs = count;
    if (count == 8) host.handles.lockProc = nullptr;
    Handle handle = host.newHandle(8);
    EXPECT_EQ(HostLockHandle(&host.handles, handle, 1), nullptr);
    HostUnlockHandle(count == 8 ? nullptr : &host.handles, handle);
    HostDisposeHandle(&host.handles, handle);
    EXPECT_EQ(host.liveHandles(), count == 8 ? 0 : 1);
    EXPECT_EQ(HostNewHandle(&host.handles, 8) != nullptr, count == 8);
    EXPECT_TRUE(host.allViolations().empty());
  }
}

TEST(DescriptorTest, VersionsCountsAndAllProceduresDecide) {
  std::vector<Case> cases = {{[](TestHost& h) { h.reading.numReadDescriptorProcs = 19; }, Table::Taken},
                             {[](TestHost& h) { h.scripting.descriptorParametersVersion = -1; }, Table::NotTaken},
                             {[](TestHost& h) { h.scripting.descriptorParametersVersion = 1; }, Table::Newer},
                             {[](TestHost& h) { h.reading.readDescriptorProcsVersion = 1; }, Table::Newer},
                             {[](TestHost& h) { h.writing.writeDescriptorProcsVersion = 1; }, Table::Newer},
                             {[](TestHost& h) { h.reading.readDescriptorProcsVersion = -1; }, Table::NotTaken},
                             {[](TestHost& h) { h.writing.writeDescriptorProcsVersion = -1; }, Table::NotTaken},
                             {[](TestHost& h) { h.record.descriptorParameters = nullptr; }, Table::NotTaken},
                             {[](TestHost& h) { h.scripting.readDescriptorProcs = nullptr; }, Table::NotTaken},
                             {[](TestHost& h) { h.scripting.writeDescriptorProcs = nullptr; }, Table::NotTaken},
                             {[](TestHost& h) { h.reading.numReadDescriptorProcs = 17; }, Table::NotTaken},
                             {[](TestHost& h) { h.writing.numWriteDescriptorProcs = 15; }, Table::NotTaken}};
  for (int i = 0; i < 18; ++i) {
    cases.push_back({[i](TestHost& h) { removeProcedure(&h.reading, i); }, Table::NotTaken});
    if (i < 16) cases.push_back({[i](TestHost& h) { removeProcedure(&h.writing, i); }, Table::NotTaken});
  }
  expectTables(
      cases, [](TestHost& h, Boolean* newer) { return HostDescriptorAvailable(h.record.descriptorParameters, newer); });
}

struct Access {
  VRect (*get)();
  void (*set)(VRect);
  Rect FilterRecord::*narrow;
  VRect BigDocumentStruct::*wide;
};

bool same(VRect a, VRect b) { return std::memcmp(&a, &b, sizeof a) == 0; }

// Without the wide record, with it but without its flag, and with both.
TEST(Rectangles, FollowTheHostsWidth) {
  const Access rects[] = {{GetFilterRect, nullptr, &FilterRecord::filterRect, &BigDocumentStruct::filterRect32},
                          {GetInRect, SetInRect, &FilterRecord::inRect, &BigDocumentStruct::inRect32},
                          {GetOutRect, SetOutRect, &FilterRecord::outRect, &BigDocumentStruct::outRect32},
                          {GetMaskRect, SetMaskRect, &FilterRecord::maskRect, &BigDocumentStruct::maskRect32}};
  const VRect large = {65536 + 5, -65536 - 2, 0x12348000, 7};
  for (const int width : {0, 1, 2}) {
    TestHost host(1, 1, 3, 8);
    gFilterRecord = &host.record;
    host.record.bigDocumentData = width == 0 ? nullptr : &host.big;
    host.big.PluginUsing32BitCoordinates = width == 2 ? 2 : 0;
    for (const Access& access : rects) {
      SCOPED_TRACE(&access - rects);
      host.record.*access.narrow = {-1, 2, -32768, 32767};
      host.big.*access.wide = large;
      EXPECT_TRUE(same(access.get(), width == 2 ? large : VRect{-1, 2, -32768, 32767}));
      host.record.*access.narrow = {};
      host.big.*access.wide = {};
      if (access.set == nullptr) continue;
      access.set(large);
      EXPECT_TRUE(same(access.get(), width == 2 ? large : VRect{5, -2, -32768, 7}));
      EXPECT_TRUE(same(host.big.*access.wide, width == 2 ? large : VRect{})) << "the other width was set";
    }
    host.record.imageSize = {-3, 4};
    host.record.wholeSize = {5, -6};
    host.record.floatCoord = {-7, 8};
    host.big.imageSize32 = {70000, -70001};
    host.big.wholeSize32 = {70002, 70003};
    host.big.floatCoord32 = {70004, 70005};
    EXPECT_EQ(GetImageSize().v, width == 2 ? 70000 : -3);
    EXPECT_EQ(GetImageSize().h, width == 2 ? -70001 : 4);
    EXPECT_EQ(GetWholeSize().h, width == 2 ? 70003 : -6);
    EXPECT_EQ(GetFloatCoord().v, width == 2 ? 70004 : -7);
  }
}

}  // namespace
