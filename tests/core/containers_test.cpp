#include <gmock/gmock.h>

#include <cstdint>
#include <set>
#include <string>

#include "postrider.h"
#include "resident/core/windows_api.h"

TEST(SList, NodesAreReusedAndHoldTheirOwnItems) {
    static char items[1000];
    std::set<std::uintptr_t> pages;
    const bool guarded = GetModuleHandleA("guarded_memory.dll");
    for (int round = 0; round < (guarded ? 2 : 100); ++round) {
        S_List list;
        S_List other;
        for (char& item : items)
            EXPECT_EQ((&item - items) % 3 ? list.AppendItem(&item) : other.AppendItem(&item), 1);
        EXPECT_EQ(list.mlCount + other.mlCount, 1000);
        for (long index = 0; index < other.mlCount; ++index)
            EXPECT_EQ(other[index]->data, items + 3 * index);
        for (long index = 0; index < list.mlCount; ++index)
            EXPECT_EQ(list[index]->data, items + index / 2 * 3 + index % 2 + 1);
        for (const S_List* each : {&list, &other})
            for (const ListNode* node = each->mpoHead; node; node = node->next)
                pages.insert(reinterpret_cast<std::uintptr_t>(node) / 4096);
    }
    // Side by side, and the same ones again; over guarded memory each has a page of its own.
    EXPECT_TRUE(pages.size() < 20 || guarded) << pages.size();
}

TEST(SList, ADerivedNodeHasRoomForItsOwnMembers) {
    struct WideNode : ListNode {
        WideNode() : ListNode(nullptr, nullptr) {}
        char text[64] = "";
    };
    ListNode* const wide = new WideNode;
    delete wide;
    S_List list;
    char items[2];
    list.AppendItem(&items[0]);
    list.AppendItem(&items[1]);
    EXPECT_EQ(list[1]->data, &items[1]);
}

static std::string deleted;

struct Recorded {
    explicit Recorded(char letter) : name(letter) {}
    virtual ~Recorded() { deleted += name; }
    char name;
};

TEST(RbContainer, DeletesItsObjectsOnlyWhenItOwnsThem) {
    for (unsigned int flags : {0u, 1u, 2u, 3u}) {
        Recorded *const a = new Recorded('a'), *const b = new Recorded('b');
        {
            RB_Container<Recorded> container(flags);
            container.AddObject(*a);
            container.AddObject(*b);
            container.RemoveObject(*a);
            container.ClearContainer();
            container.AddObject(*a);
        }
        EXPECT_EQ(deleted, flags & 1 ? "ba" : "") << flags;
        if (!(flags & 1))
            delete a, delete b;
        deleted.clear();
    }
}
