// What the ticker knows of an inbox, against a model that goes by the law alone.

#include <gtest/gtest.h>

#include <algorithm>
#include <map>

#include "programs/mailticker/inbox.h"
#include "tests/support/random.h"

namespace {

struct Known {
    std::string from, topic, file;
    unsigned int kind;
    bool processed;

    std::string Key() const { return from + '|' + topic + '|' + file; }
};

// Small letters without accents, of the characters that the test uses.
std::string Plain(std::string text) {
    for (char& c : text)
        c = c == '\xC4' || c == '\xE4' ? 'a' : static_cast<char>(std::tolower(c));
    return text;
}

const char* const kKinds[] = {"information", "message", "enclosure", "notice",
                              "receipt",     "form",    "damaged"};

class Model {
public:
    void Take(std::vector<Known> next, unsigned long long now) {
        arrived.clear();
        std::map<std::string, bool> stillNew;
        for (const Known& message : messages)
            if (!Has(next, message.Key()))
                mGone[message.Key()] = now;
        for (std::size_t i = 0; i < next.size(); ++i) {
            const std::string key = next[i].Key();
            const bool seen =
                Has(messages, key) || (mGone.contains(key) && now - mGone[key] <= 5000);
            if (mTaken && !seen && !next[i].processed)
                arrived.push_back(i);
            if (!next[i].processed && (fresh.contains(key) || (mTaken && !seen)))
                stillNew[key] = true;
        }
        fresh = stillNew;
        messages = std::move(next);
        mTaken = true;
    }

    std::vector<std::uint32_t> Rows() const {
        std::vector<std::uint32_t> rows;
        for (std::size_t i = 0; i < messages.size(); ++i)
            if (Passes(messages[i]))
                rows.push_back(i);
        std::stable_sort(rows.begin(), rows.end(), [&](std::uint32_t a, std::uint32_t b) {
            const auto left = Sorted(a), right = Sorted(b);
            return descending ? right < left : left < right;
        });
        return rows;
    }

    std::vector<Known> messages;
    std::vector<std::size_t> arrived;
    std::map<std::string, bool> fresh;
    std::vector<std::string> words;
    bool onlyUnprocessed = false;
    Column column = Column::Slot;
    bool descending = false;

private:
    static bool Has(const std::vector<Known>& all, const std::string& key) {
        return std::any_of(all.begin(), all.end(),
                           [&](const Known& one) { return one.Key() == key; });
    }
    bool Passes(const Known& message) const {
        if (onlyUnprocessed && message.processed)
            return false;
        return std::all_of(words.begin(), words.end(), [&](const std::string& word) {
            for (const std::string& text :
                 {message.from, message.topic, message.file, std::string(kKinds[message.kind])})
                if (Plain(text).find(Plain(word)) != std::string::npos)
                    return true;
            return false;
        });
    }
    std::string Sorted(std::uint32_t i) const {
        const Known& message = messages[i];
        switch (column) {
        case Column::From:
            return Plain(message.from);
        case Column::Topic:
            return Plain(message.topic);
        case Column::File:
            return Plain(message.file);
        case Column::Kind:
            return kKinds[message.kind];
        default:
            return std::string{char(i >> 8), char(i)};
        }
    }

    bool mTaken = false;
    std::map<std::string, unsigned long long> mGone;
};

Known AnyMessage(Random& random) {
    // Few different ones, so that they come again; long ones that differ at the end alone.
    const std::string letters = "aA\xC4\xE4"
                                "b .";
    return {random.Text(2, letters), "A long topic " + random.Text(1, letters),
            "M" + random.Text(1, "012") + ".EML", random.Below(7), random.OneIn(3)};
}

} // namespace

TEST(Inbox, DoesAsTheModelAfterRandomSteps) {
    for (unsigned int seed = 0; seed < 60; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Random random(seed);
        Inbox inbox;
        Model model;
        unsigned long long now = 1000;
        for (int step = 0; step < 60; ++step) {
            switch (random.Below(6)) {
            case 0:
            case 1: {
                std::vector<Known> next = model.messages;
                for (unsigned int changes = random.Below(4); changes-- > 0;) {
                    if (!next.empty() && random.OneIn(3))
                        next.erase(next.begin() + random.Below(next.size()));
                    else if (!next.empty() && random.OneIn(3))
                        next[random.Below(next.size())].processed ^= 1;
                    else
                        next.insert(next.begin() + random.Below(next.size() + 1),
                                    AnyMessage(random));
                }
                Messages messages;
                for (const Known& one : next)
                    messages.Add(one.from.c_str(), one.topic.c_str(), one.file.c_str(), one.kind,
                                 one.processed);
                now += random.Below(4000);
                inbox.Take(std::move(messages), now);
                model.Take(std::move(next), now);
                EXPECT_EQ(inbox.Arrived(), model.arrived);
                break;
            }
            case 2: {
                model.words.clear();
                std::wstring typed;
                for (unsigned int words = random.Below(3); words-- > 0;) {
                    const std::string word =
                        random.Of<std::string>({"a", "\xC4", "aB", "m1", "RM"});
                    model.words.push_back(word);
                    for (const char c : word)
                        typed += static_cast<unsigned char>(c);
                    typed += L"  ";
                }
                inbox.Filter(typed);
                break;
            }
            case 3:
                inbox.OnlyUnprocessed(model.onlyUnprocessed = random.OneIn(2));
                break;
            case 4:
                model.column = static_cast<Column>(random.Below(kColumns));
                inbox.Sort(model.column, model.descending = random.OneIn(2));
                break;
            case 5:
                inbox.ForgetNew();
                model.fresh.clear();
            }
            ASSERT_EQ(inbox.Rows(), model.Rows());
            ASSERT_EQ(inbox.New(), model.fresh.size());
        }
    }
}

TEST(Inbox, FindsNothingForLettersThatNoInboxHas) {
    Inbox inbox;
    Messages messages;
    messages.Add("Sender", "Topic", "M.EML", 1, false);
    inbox.Take(std::move(messages), 0);
    inbox.Filter(L"\u0416");
    EXPECT_TRUE(inbox.Rows().empty());
    inbox.Filter(L"");
    EXPECT_EQ(inbox.Rows().size(), 1u);
}
