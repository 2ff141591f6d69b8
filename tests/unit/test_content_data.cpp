// The page model: releasing a page with FreeContent (rows, cells, the
// function-key vectors and the sub-pages they name) and carrying addresses as
// decimal text in argument vectors.
//
// Outside the sanitizer build the test program replaces the global allocation
// functions with a recorder, so that the tests can see exactly which blocks a
// release gives back, that none is given back twice and that nothing the page
// owned is left behind. Under the address sanitizer its own allocator does
// that job (double frees abort, leaks fail the program at exit) and the
// recorder is left out.
#include <gtest/gtest.h>

#include <cinttypes>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <new>
#include <set>
#include <string>
#include <vector>

#include "content/content_data.h"
#include "content/content_types.h"
#include "strings/help_id.h"
#include "strings/prompt_id.h"

#if defined(__SANITIZE_ADDRESS__)
#define NV_RECORD_ALLOCATIONS 0
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define NV_RECORD_ALLOCATIONS 0
#endif
#endif
#ifndef NV_RECORD_ALLOCATIONS
#define NV_RECORD_ALLOCATIONS 1
#endif

namespace {

// One allocation or release seen while recording.
struct AllocEvent {
    bool bAlloc;
    const void* p;
};

constexpr int kMaxEvents = 1 << 16;
AllocEvent g_aEvents[kMaxEvents];
int g_iEvents = 0;
bool g_bOverflow = false;
bool g_bRecording = false;

[[maybe_unused]] void Note(bool bAlloc, const void* p) {
    if (!g_bRecording || p == nullptr)
        return;
    if (g_iEvents >= kMaxEvents) {
        g_bOverflow = true;
        return;
    }
    g_aEvents[g_iEvents++] = AllocEvent{bAlloc, p};
}

}  // namespace

#if NV_RECORD_ALLOCATIONS
void* operator new(std::size_t n) {
    void* p = std::malloc(n == 0 ? 1 : n);
    if (p == nullptr)
        throw std::bad_alloc();
    Note(true, p);
    return p;
}
void* operator new[](std::size_t n) {
    return ::operator new(n);
}
void operator delete(void* p) noexcept {
    Note(false, p);
    std::free(p);
}
void operator delete[](void* p) noexcept {
    ::operator delete(p);
}
void operator delete(void* p, std::size_t) noexcept {
    ::operator delete(p);
}
void operator delete[](void* p, std::size_t) noexcept {
    ::operator delete(p);
}
#endif

namespace {

// Whether the recorder is in place (not in the sanitizer build).
constexpr bool kRecorded = NV_RECORD_ALLOCATIONS != 0;

// The events recorded between Start and Stop.
class AllocLog {
public:
    void Start() {
        g_iEvents = 0;
        g_bOverflow = false;
        g_bRecording = true;
    }
    void Stop() {
        g_bRecording = false;
        m_vEvents.clear();
        for (int i = 0; i < g_iEvents; ++i)
            m_vEvents.push_back(g_aEvents[i]);
        m_bOverflow = g_bOverflow;
    }
    bool Overflow() const { return m_bOverflow; }
    // Blocks obtained during the recording and not given back by its end.
    std::set<const void*> Live() const {
        std::set<const void*> live;
        for (const AllocEvent& e : m_vEvents) {
            if (e.bAlloc)
                live.insert(e.p);
            else
                live.erase(e.p);
        }
        return live;
    }
    // Every release, in order.
    std::vector<const void*> Released() const {
        std::vector<const void*> v;
        for (const AllocEvent& e : m_vEvents) {
            if (!e.bAlloc)
                v.push_back(e.p);
        }
        return v;
    }
    // A block given back that was not live at that moment: one obtained
    // before the recording and not in owned, or one already given back.
    std::string BadRelease(const std::set<const void*>& owned) const {
        std::set<const void*> live = owned;
        for (const AllocEvent& e : m_vEvents) {
            if (e.bAlloc) {
                live.insert(e.p);
            } else if (live.erase(e.p) == 0) {
                char sz[64];
                snprintf(sz, sizeof(sz), "%p", e.p);
                return sz;
            }
        }
        return "";
    }

private:
    std::vector<AllocEvent> m_vEvents;
    bool m_bOverflow = false;
};

// A read-only page of iRows rows of one or two cells, built as the page
// builders build theirs.
CONTENT_DATA* NewTextPage(int iRows, const std::string& sPrefix) {
    CONTENT_DATA* pstPage = new CONTENT_DATA;
    pstPage->pfnRefreshCallFunc = nullptr;
    pstPage->iItemNum = iRows;
    pstPage->pstItem = new CONTENT_ITEM[iRows];
    for (int r = 0; r < iRows; ++r) {
        CONTENT_ITEM& stRow = pstPage->pstItem[r];
        stRow.iPromptIndex = PROMPT_CONTENT_NO_MODIFY;
        stRow.iHelpInfoIndex = EN_TCP_PORT_LISTEN;
        stRow.iSectionNum = 1 + r % 2;
        stRow.pstSection = new CONTENT_SECTION[stRow.iSectionNum];
        for (int j = 0; j < stRow.iSectionNum; ++j) {
            CONTENT_SECTION& stSec = stRow.pstSection[j];
            stSec.iMaxWidth = 0;
            // Long enough to live outside the string object itself.
            stSec.strSecName = sPrefix + " row " + std::to_string(r) + " cell " +
                               std::to_string(j) + " with a text of some length";
            stSec.enCtrlType = EN_NONE_CONTROL;
            stSec.vstrCtrlShowStr = {"first option with a long text", "second option"};
            stSec.vstrCtrlArgv = {"0"};
        }
    }
    return pstPage;
}

// A function-key vector whose entry 1 names pstSubPage ("0" for null).
tVstr* NewKeyVector(const CONTENT_DATA* pstSubPage) {
    return new tVstr{"0", PtrToArg(pstSubPage), "further entry of the form"};
}

// All blocks owned by a page, its rows and cells, found by building the page
// with recording on.
struct RecordedPage {
    CONTENT_DATA* pstPage = nullptr;
    CONTENT_DATA* pstSubF2 = nullptr;
    CONTENT_DATA* pstSubF3 = nullptr;
    std::set<const void*> owned;
    bool bOverflow = false;
};

RecordedPage BuildWithSubPages(bool bF3SubPage) {
    AllocLog log;
    RecordedPage rec;
    log.Start();
    rec.pstPage = NewTextPage(5, "parent");
    rec.pstSubF2 = NewTextPage(3, "form of F2");
    rec.pstSubF3 = bF3SubPage ? NewTextPage(4, "form of F3") : nullptr;
    rec.pstPage->mKey2vstrArgv[MAP_KEY_F2] = NewKeyVector(rec.pstSubF2);
    rec.pstPage->mKey2vstrArgv[MAP_KEY_F3] = NewKeyVector(rec.pstSubF3);
    log.Stop();
    rec.owned = log.Live();
    rec.bOverflow = log.Overflow();
    return rec;
}

std::string Text(const void* p) {
    char sz[64];
    snprintf(sz, sizeof(sz), "%p", p);
    return sz;
}

int CountOf(const std::vector<const void*>& v, const void* p) {
    int n = 0;
    for (const void* q : v)
        n += q == p ? 1 : 0;
    return n;
}

TEST(ContentData, FreeingANullPageDoesNothing) {
    FreeContent(nullptr);
    SUCCEED();
}

TEST(ContentData, APageWithoutItsRowArrayIsLeftAlone) {
    CONTENT_DATA* pstPage = new CONTENT_DATA;
    pstPage->iItemNum = 3;
    pstPage->pstItem = nullptr;
    pstPage->pfnRefreshCallFunc = nullptr;
    tVstr* pvArgv = new tVstr{"0", "0"};
    pstPage->mKey2vstrArgv[MAP_KEY_F2] = pvArgv;
    AllocLog log;
    log.Start();
    FreeContent(pstPage);
    log.Stop();
    EXPECT_TRUE(log.Released().empty());
    // Still a whole page: its fields and its map are untouched.
    EXPECT_EQ(pstPage->iItemNum, 3);
    EXPECT_EQ(pstPage->pstItem, nullptr);
    ASSERT_EQ(pstPage->mKey2vstrArgv.size(), 1u);
    EXPECT_EQ(pstPage->mKey2vstrArgv[MAP_KEY_F2], pvArgv);
    delete pvArgv;
    delete pstPage;
}

TEST(ContentData, FreeingAPageReleasesBothSubPagesAndItself) {
    RecordedPage rec = BuildWithSubPages(true);
    ASSERT_FALSE(rec.bOverflow);
    AllocLog log;
    log.Start();
    FreeContent(rec.pstPage);
    log.Stop();
    ASSERT_FALSE(log.Overflow());
    if (kRecorded) {
        std::vector<const void*> released = log.Released();
        for (const void* p :
             {static_cast<const void*>(rec.pstPage), static_cast<const void*>(rec.pstSubF2),
              static_cast<const void*>(rec.pstSubF3)}) {
            EXPECT_EQ(CountOf(released, p), 1) << "page " << Text(p);
        }
        // The parent goes last, after the sub-pages named in its vectors.
        ASSERT_FALSE(released.empty());
        EXPECT_EQ(released.back(), rec.pstPage);
        EXPECT_EQ(log.BadRelease(rec.owned), "") << "released twice or not owned by the page";
        // Nothing that the page, its rows, cells, vectors and sub-pages held is
        // left behind.
        std::set<const void*> left;
        for (const void* p : rec.owned) {
            if (CountOf(released, p) == 0)
                left.insert(p);
        }
        EXPECT_TRUE(left.empty()) << left.size() << " blocks of the page are not released";
        EXPECT_TRUE(log.Live().empty()) << "blocks obtained while freeing are kept";
    }
}

TEST(ContentData, AVectorWhoseEntryOneIsZeroFreesNoSubPage) {
    RecordedPage rec = BuildWithSubPages(false);
    ASSERT_EQ(rec.pstPage->mKey2vstrArgv[MAP_KEY_F3]->at(1), "0");
    ASSERT_FALSE(rec.bOverflow);
    // A decoy page that nothing names must survive.
    CONTENT_DATA* pstDecoy = NewTextPage(2, "decoy");
    AllocLog log;
    log.Start();
    FreeContent(rec.pstPage);
    log.Stop();
    if (kRecorded) {
        std::vector<const void*> released = log.Released();
        EXPECT_EQ(CountOf(released, rec.pstPage), 1);
        EXPECT_EQ(CountOf(released, rec.pstSubF2), 1);
        EXPECT_EQ(CountOf(released, pstDecoy), 0);
        EXPECT_EQ(log.BadRelease(rec.owned), "") << "released twice or not owned by the page";
    }
    // The decoy is whole and can be released in its turn.
    EXPECT_EQ(pstDecoy->iItemNum, 2);
    EXPECT_EQ(pstDecoy->pstItem[1].pstSection[0].strSecName.substr(0, 11), "decoy row 1");
    FreeContent(pstDecoy);
}

TEST(ContentData, AVectorWithoutEntryOneFreesNoSubPage) {
    CONTENT_DATA* pstPage = NewTextPage(1, "short vector");
    pstPage->mKey2vstrArgv[MAP_KEY_F9] = new tVstr{"0"};
    pstPage->mKey2vstrArgv[MAP_KEY_F4] = new tVstr;
    FreeContent(pstPage);
    SUCCEED();
}

TEST(ContentData, SubPagesAreFreedRecursively) {
    CONTENT_DATA* pstLeaf = NewTextPage(2, "leaf");
    CONTENT_DATA* pstMiddle = NewTextPage(2, "middle");
    pstMiddle->mKey2vstrArgv[MAP_KEY_F5] = NewKeyVector(pstLeaf);
    CONTENT_DATA* pstTop = NewTextPage(2, "top");
    pstTop->mKey2vstrArgv[MAP_KEY_F2] = NewKeyVector(pstMiddle);
    AllocLog log;
    log.Start();
    FreeContent(pstTop);
    log.Stop();
    if (kRecorded) {
        std::vector<const void*> released = log.Released();
        EXPECT_EQ(CountOf(released, pstLeaf), 1);
        EXPECT_EQ(CountOf(released, pstMiddle), 1);
        EXPECT_EQ(CountOf(released, pstTop), 1);
    }
}

// Keys outside F2..F9 are not function keys of a page: their vectors are not
// read for sub-pages.
TEST(ContentData, OnlyKeysF2ToF9NameSubPages) {
    CONTENT_DATA* pstOutside = NewTextPage(1, "named under F10");
    tVstr vArgv{"0", PtrToArg(pstOutside)};
    CONTENT_DATA* pstPage = NewTextPage(1, "page");
    pstPage->mKey2vstrArgv[MAP_KEY_MAX] = &vArgv;     // F10, the bound
    pstPage->mKey2vstrArgv[MAP_KEY_F2 - 1] = &vArgv;  // F1
    AllocLog log;
    log.Start();
    FreeContent(pstPage);
    log.Stop();
    if (kRecorded) {
        EXPECT_EQ(CountOf(log.Released(), pstOutside), 0);
        EXPECT_EQ(CountOf(log.Released(), &vArgv), 0);
    }
    EXPECT_EQ(pstOutside->pstItem[0].pstSection[0].strSecName.substr(0, 23),
              "named under F10 row 0 c");
    FreeContent(pstOutside);
}

TEST(ContentData, APageWithNoRowsIsValidAndFreed) {
    CONTENT_DATA* pstPage = NewTextPage(0, "empty");
    ASSERT_NE(pstPage->pstItem, nullptr);  // a zero-length array
    AllocLog log;
    log.Start();
    FreeContent(pstPage);
    log.Stop();
    if (kRecorded) {
        EXPECT_EQ(CountOf(log.Released(), pstPage), 1);
    }
}

TEST(ContentData, RowsWithoutCellsAreFreed) {
    CONTENT_DATA* pstPage = new CONTENT_DATA;
    pstPage->pfnRefreshCallFunc = nullptr;
    pstPage->iItemNum = 2;
    pstPage->pstItem = new CONTENT_ITEM[2];
    pstPage->pstItem[0] = CONTENT_ITEM{PROMPT_CONTENT, EN_SHMMAX, 0, nullptr};
    pstPage->pstItem[1] = CONTENT_ITEM{PROMPT_CONTENT, EN_SHMALL, 0, new CONTENT_SECTION[0]};
    FreeContent(pstPage);
    SUCCEED();
}

TEST(ContentData, PointersTravelAsDecimalText) {
    int iOnStack = 0;
    std::vector<const void*> vPointers = {nullptr, &iOnStack, new int(7),
                                          reinterpret_cast<const void*>(&FreeContent),
                                          reinterpret_cast<const void*>(UINTPTR_MAX - 15)};
    for (const void* p : vPointers) {
        std::string s = PtrToArg(p);
        char szWant[32];
        snprintf(szWant, sizeof(szWant), "%" PRIuPTR, reinterpret_cast<uintptr_t>(p));
        EXPECT_EQ(s, szWant);
        EXPECT_EQ(s.find_first_not_of("0123456789"), std::string::npos) << s;
        EXPECT_EQ(ArgToPtr(s), p) << s;
    }
    // Real heap and stack addresses on this platform lie above 4 GiB, so the
    // text must carry more than 32 bits.
    if (sizeof(void*) == 8) {
        EXPECT_GT(reinterpret_cast<uintptr_t>(vPointers[1]), uintptr_t{0xFFFFFFFFu});
        EXPECT_GT(strtoull(PtrToArg(vPointers[4]).c_str(), nullptr, 10), 0xFFFFFFFFull);
    }
    delete static_cast<const int*>(vPointers[2]);
}

TEST(ContentData, ZeroTextIsNoPointer) {
    EXPECT_EQ(PtrToArg(nullptr), "0");
    EXPECT_EQ(ArgToPtr("0"), nullptr);
}

TEST(ContentData, AFunctionRoundTripsAndCanBeCalled) {
    UPDATE_FUNC pfn = [](char* pcText, void*) { return pcText[0] == 'y' ? 7 : 0; };
    std::string s = PtrToArg(reinterpret_cast<const void*>(pfn));
    UPDATE_FUNC pfnBack = reinterpret_cast<UPDATE_FUNC>(ArgToPtr(s));
    ASSERT_EQ(pfnBack, pfn);
    char szYes[] = "yes";
    EXPECT_EQ(pfnBack(szYes, nullptr), 7);
}

}  // namespace
