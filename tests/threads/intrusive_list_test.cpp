// The intrusive list against a std::list model, and its asserted invariants.
#include <gtest/gtest.h>

#include <algorithm>
#include <list>
#include <random>

#include "tests/support/recording_sink.h"
#include "utils/common/IntrusiveList.h"

namespace {

struct Node { int value = 0; double padding = 0; CIntrusiveLink link; };

constexpr std::size_t kOffset = offsetof(Node, link);

std::vector<Node*> Walk(const CIntrusiveList<Node>& list) {
    std::vector<Node*> out;
    for (Node* p = list.First(); p && out.size() < 100; p = list.Next(p)) out.push_back(p);
    return out;
}

TEST(IntrusiveList, MatchesAListModelUnderRandomEdits) {
    std::mt19937 rng(7);
    Node nodes[12];
    CIntrusiveList<Node> list(kOffset);
    std::list<Node*> model;
    for (int step = 0; step < 4000; ++step) {
        Node* n = &nodes[rng() % 12];
        const bool append = rng() % 3 != 2;  // appending moves a member to the tail
        if (append) list.PushBack(n);
        else list.Remove(n);
        model.remove(n);
        if (append) model.push_back(n);
        ASSERT_EQ(Walk(list), std::vector<Node*>(model.begin(), model.end())) << "step " << step;
        ASSERT_EQ(list.IsEmpty(), model.empty());
        for (Node& x : nodes) ASSERT_EQ(x.link.IsLinked(), std::count(model.begin(), model.end(), &x) == 1);
    }
    while (Node* n = list.First()) list.Remove(n);
    for (Node& x : nodes) EXPECT_FALSE(x.link.IsLinked());
}

TEST(IntrusiveList, UnlinkedLinksPointToThemselvesAndTheEndMarkIsOdd) {
    Node a, b;
    EXPECT_EQ(a.link.m_pNext, (void*)((std::uintptr_t)&a.link | 1));
    EXPECT_EQ(a.link.m_ppPrev, &a.link.m_pNext);
    a.link.Unlink(kOffset);  // safe on a self-linked link
    EXPECT_FALSE(a.link.IsLinked());
    CIntrusiveList<Node> list(kOffset);
    list.PushBack(&a);
    list.PushBack(&b);
    EXPECT_EQ(a.link.m_pNext, (void*)&b);
    EXPECT_EQ(b.link.m_ppPrev, &a.link.m_pNext);
    EXPECT_EQ((std::uintptr_t)b.link.m_pNext & 1, 1u);
    Node copy = a;  // a copy is not a member
    EXPECT_FALSE(copy.link.IsLinked());
    EXPECT_EQ(Walk(list), (std::vector<Node*>{&a, &b}));
    list.Remove(&a);
    list.Remove(&b);
}

TEST(IntrusiveList, MissingOffsetAndOddNodesAreReported) {
    qmtest::RecordingAssertSink sink;
    Node a;
    CIntrusiveList<Node> unset;
    unset.PushBack(&a);
    EXPECT_FALSE(a.link.IsLinked());
    CIntrusiveList<Node> list(kOffset);
    list.PushBack(reinterpret_cast<Node*>(reinterpret_cast<char*>(&a) + 1));
    EXPECT_TRUE(list.IsEmpty());
    EXPECT_EQ(sink.Expressions(), (std::vector<std::string>{"m_offset != (size_t) -1", "!((size_t) node & 1)"}));
    EXPECT_EQ(sink.Reports()[0].module, "utils\\common\\IntrusiveList");
}

}  // namespace
