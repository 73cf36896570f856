// Containers: an object whose attributes and items come, go, are copied, moved, written and read in
// random order always holds what a plain map holds.
#include "quorvex/Attributes.h"
#include "tests/maker/maker_objects.h"

#include <array>
#include <gtest/gtest.h>
#include <map>
#include <random>
#include <string>
#include <utility>

namespace quorvex::test {
namespace {

using Texts = std::vector<std::string>;

/// What an object should hold.
struct Model {
    std::map<std::uint32_t, Texts> texts;
    std::map<std::uint32_t, std::vector<Model>> items;
};

constexpr std::uint32_t kComments = 0x00204000;  // have one value
constexpr std::uint32_t kTextTags[] = {0x00080070, 0x00080080, 0x00081030, 0x0008103E, 0x00100010,
                                       0x00100020, 0x00180015, 0x00200010, kComments};
constexpr std::uint32_t kSequenceTags[] = {0x00081140, 0x00400275, 0x00540016};

Texts TextsOf(const CDcmObjectCommon& object, std::uint32_t tag) {
    Texts texts;
    ForEachValue<CString>(object, tag,
                          [&](const CString& text) { texts.push_back(text.ToUtf8()); });
    return texts;
}

/// What stands there, or nothing.
template <class Values>
Values At(const std::map<std::uint32_t, Values>& values, std::uint32_t tag) {
    const auto found = values.find(tag);
    return found == values.end() ? Values() : found->second;
}

bool Agrees(const CDcmObjectCommon& object, const Model& model) {
    const auto holdsTexts = [&](std::uint32_t tag) {
        return TextsOf(object, tag) == At(model.texts, tag);
    };
    const auto holdsItems = [&](std::uint32_t tag) {
        const auto wanted = At(model.items, tag);
        CDcmItem item;
        std::size_t count = 0;
        for (auto r = object.GetValue(tag, item); r == kDcmSuccess;
             r = object.GetNextValue(tag, item), ++count)
            if (count >= wanted.size() || !Agrees(item, wanted[count])) return false;
        return count == wanted.size();
    };
    return std::ranges::all_of(kTextTags, holdsTexts) &&
           std::ranges::all_of(kSequenceTags, holdsItems);
}

/// An object beside its model, and the steps that change both alike.
struct Pair {
    CDcmObject object;
    Model model;
};

class Walker {
public:
    explicit Walker(unsigned seed) : random_(seed) {
        for (Pair& pair : pairs_) pair.object.SetTransferSyntax(kExplicitLittleEndian);
    }

    void Step() {
        Pair& pair = pairs_[Below(pairs_.size())];
        using W = Walker;
        static constexpr void (W::*kSteps[])(Pair&) = {&W::SetText,
                                                       &W::AddText,
                                                       &W::Remove,
                                                       &W::SetItem,
                                                       &W::AddItem,
                                                       &W::CopyFrom,
                                                       &W::SwapAround,
                                                       &W::ChangeALoneItem,
                                                       &W::EraseInTheMiddleOfReading,
                                                       &W::WriteAndRead,
                                                       &W::Clear};
        step_ = Below(std::size(kSteps) * 4);
        if (step_ >= std::size(kSteps)) step_ %= 5;  // most steps fill the object
        const auto step = kSteps[step_];
        (this->*step)(pair);
        for (const Pair& each : pairs_)
            ASSERT_TRUE(Agrees(each.object, each.model)) << "after step " << step_;
    }

private:
    std::size_t Below(std::size_t end) { return random_() % end; }
    std::uint32_t TextTag() { return kTextTags[Below(std::size(kTextTags))]; }
    std::uint32_t SequenceTag() { return kSequenceTags[Below(std::size(kSequenceTags))]; }
    std::string Text() {
        std::string text(1 + Below(8) * Below(8), 'A');
        for (char& letter : text) letter = static_cast<char>('A' + Below(26));
        return text;
    }

    void SetText(Pair& pair) {
        const auto tag = TextTag();
        pair.model.texts[tag] = {Text()};
        EXPECT_EQ(pair.object.SetValue(tag, CString(pair.model.texts[tag][0])), kDcmSuccess);
    }
    void AddText(Pair& pair) {
        const auto tag = TextTag();
        if (tag == kComments) return SetText(pair);
        pair.model.texts[tag].push_back(Text());
        EXPECT_EQ(pair.object.SetNextValue(tag, CString(pair.model.texts[tag].back())),
                  kDcmSuccess);
    }
    void Remove(Pair& pair) {
        const auto tag = Below(2) == 0 ? TextTag() : SequenceTag();
        pair.model.texts.erase(tag);
        pair.model.items.erase(tag);
        EXPECT_EQ(pair.object.RemoveValue(tag), kDcmSuccess);
    }

    /// An item with texts and, from another object, nested items.
    std::pair<CDcmItem, Model> MakeItem() {
        std::pair<CDcmItem, Model> made;
        for (std::size_t i = Below(3); i-- > 0;) {
            const auto tag = TextTag();
            made.second.texts[tag] = {Text()};
            made.first.SetValue(tag, CString(made.second.texts[tag][0]));
        }
        const Pair& other = pairs_[Below(pairs_.size())];
        const auto tag = SequenceTag();
        const auto nested = At(other.model.items, tag);
        CDcmItem item;
        if (nested.empty() || !nested[0].items.empty()) return made;
        EXPECT_EQ(other.object.GetValue(tag, item), kDcmSuccess);
        made.first.SetValue(tag, &item);
        made.second.items[tag] = {nested[0]};
        return made;
    }
    void SetItem(Pair& pair) {
        const auto tag = SequenceTag();
        auto [item, model] = MakeItem();
        EXPECT_EQ(pair.object.SetValue(tag, &item), kDcmSuccess);
        pair.model.items[tag] = {std::move(model)};
    }
    void AddItem(Pair& pair) {
        const auto tag = SequenceTag();
        auto [item, model] = MakeItem();
        EXPECT_EQ(pair.object.SetNextValue(tag, &item), kDcmSuccess);
        pair.model.items[tag].push_back(std::move(model));
    }

    void CopyFrom(Pair& pair) {
        const Pair& other = pairs_[Below(pairs_.size())];  // itself at times
        pair.object = other.object;
        pair.model = Model(other.model);
    }
    void SwapAround(Pair& pair) {
        Pair& other = pairs_[Below(pairs_.size())];
        Pair kept = std::move(pair);
        pair = other;
        other = std::move(kept);
    }
    /// What was read from an object is the reader's own.
    void ChangeALoneItem(Pair& pair) {
        CDcmItem item;
        if (pair.object.GetValue(SequenceTag(), item) != kDcmSuccess) return;
        item.SetValue(TextTag(), "CHANGED");
        item.RemoveValue(SequenceTag());
        item.Close();
    }
    void EraseInTheMiddleOfReading(Pair& pair) {
        const auto tag = Below(2) == 0 ? TextTag() : SequenceTag();
        CString text;
        CDcmItem item;
        pair.object.GetValue(tag, text);
        pair.object.GetValue(tag, item);
        pair.object.GetNextValue(tag, item);
        pair.object.RemoveValue(tag);
        EXPECT_NE(pair.object.GetNextValue(tag, text), kDcmSuccess);
        EXPECT_NE(pair.object.GetNextValue(tag, item), kDcmSuccess);
        pair.model.texts.erase(tag);
        pair.model.items.erase(tag);
    }
    void WriteAndRead(Pair& pair) {
        if (pair.model.texts.empty() && pair.model.items.empty()) return;  // no file has nothing
        MemoryFile file{.bytes = Written(pair.object)};
        ASSERT_FALSE(file.bytes.empty());
        ASSERT_EQ(ReadUpTo(pair.object, file, kToTheEnd), kDcmSuccess);
    }
    void Clear(Pair& pair) {
        EXPECT_EQ(Below(2) == 0 ? pair.object.Close() : pair.object.Create(), kDcmSuccess);
        pair.object.SetTransferSyntax(kExplicitLittleEndian);
        pair.model = {};
    }

    std::mt19937 random_;
    std::array<Pair, 4> pairs_;
    std::size_t step_ = 0;
};

TEST(ObjectModel, HoldsWhatAMapHolds) {
    for (unsigned seed = 1; seed <= 40; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Walker walker(seed);
        for (int step = 0; step < 300 && !::testing::Test::HasFatalFailure(); ++step) walker.Step();
        if (::testing::Test::HasFatalFailure()) return;
    }
}

}  // namespace
}  // namespace quorvex::test
