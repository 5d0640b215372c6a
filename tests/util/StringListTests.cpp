#include <StringList.h>
#include <Utils.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <iterator>
#include <random>
#include <string>
#include <vector>

namespace quarda {
namespace {

std::vector<std::string> Lines(const TStringList& list) {
  std::vector<std::string> lines;
  for (size_t i = 0; i < list.Count(); ++i) lines.emplace_back(list[i]);
  return lines;
}

std::string Lower(std::string text) {
  for (char& c : text) c = c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c;
  return text;
}

/// The list as plain strings and naive loops.
struct TModel {
  std::vector<std::string> lines;

  ptrdiff_t IndexOfName(const std::string& name) const {
    const auto found = std::ranges::find_if(lines, [&](const std::string& line) {
      const size_t equals = line.find('=');
      return equals != std::string::npos && Lower(line.substr(0, equals)) == Lower(name);
    });
    return found == lines.end() ? -1 : found - lines.begin();
  }

  void SetValue(const std::string& name, const std::string& value) {
    const ptrdiff_t index = IndexOfName(name);
    if (index >= 0 && value.empty()) lines.erase(lines.begin() + index);
    if (value.empty()) return;
    if (index < 0) lines.emplace_back();
    (index < 0 ? lines.back() : lines[static_cast<size_t>(index)]) = name + "=" + value;
  }

  void SetText(const std::string& text) {
    lines.clear();
    for (size_t at = 0; at < text.size();) {
      const size_t end = std::min(text.find_first_of("\r\n", at), text.size());
      lines.push_back(text.substr(at, end - at));
      at = end + (text.compare(end, 2, "\r\n") == 0 ? 2 : 1);
    }
  }

  void SetSeparateText(std::string text, const std::string& separator) {
    lines.clear();
    for (size_t at; !separator.empty() && (at = text.find(separator)) != std::string::npos;) {
      lines.push_back(text.substr(0, at));
      text.erase(0, at + separator.size());
    }
    if (!text.empty()) lines.push_back(text);
  }
};

class TCounter : public TStringListObserver {
 public:
  void StringListChanged() override { ++changes; }
  int changes = 0;
};

/// One random operation on list and model.
class TPlayer {
 public:
  explicit TPlayer(unsigned seed) : random_(seed) {}

  void Step(TStringList& list, TModel& model) {
    const std::string text = Text();
    const std::string name = Text().substr(0, 1);
    const std::function<void()> steps[] = {
        [&] { list.Add(text), model.lines.push_back(text); },
        [&] { Insert(list, model, text); },
        [&] { Delete(list, model); },
        [&] { Set(list, model, text); },
        [&] { list.SetValue(name, text), model.SetValue(name, text); },
        [&] { list.SetText(text), model.SetText(text); },
        [&] { list.SetSeparateText(text, name), model.SetSeparateText(text, name); },
        [&] { AddToItself(list, model); },
        [&] { AddLong(list, model); },
        [&] { EraseEmpty(list, model); },
        [&] { list = TStringList(list); },
        [&] { Shared(list, model); },
        [&] { Compare(list, model, name); }};
    steps[Below(std::size(steps))]();
    ASSERT_EQ(Lines(list), model.lines);
  }

 private:
  size_t Below(size_t limit) {
    return std::uniform_int_distribution<size_t>(0, limit - 1)(random_);
  }

  std::string Text() {
    std::string text(Below(12), ' ');
    for (char& c : text) c = "aAbB==\r\n; "[Below(10)];
    return text;
  }

  void Insert(TStringList& list, TModel& model, const std::string& text) {
    const size_t at = Below(model.lines.size() + 1);
    list.Insert(at, text);
    model.lines.insert(model.lines.begin() + static_cast<ptrdiff_t>(at), text);
  }

  void Delete(TStringList& list, TModel& model) {
    if (model.lines.empty()) return;
    const size_t at = Below(model.lines.size());
    list.Delete(at);
    model.lines.erase(model.lines.begin() + static_cast<ptrdiff_t>(at));
  }

  void Set(TStringList& list, TModel& model, const std::string& text) {
    if (model.lines.empty()) return;
    const size_t at = Below(model.lines.size());
    list.SetLine(at, text);
    model.lines[at] = text;
    list.SetLine(0, list[at]);  // from the list's own storage
    model.lines[0] = model.lines[at];
  }

  void AddToItself(TStringList& list, TModel& model) {
    if (model.lines.size() > 200) return list.Clear(), model.lines.clear();
    list.AddStrings(list);
    const std::vector<std::string> copy = model.lines;
    model.lines.insert(model.lines.end(), copy.begin(), copy.end());
  }

  void AddLong(TStringList& list, TModel& model) {  // and drops enough for a compaction
    list.Add("");
    model.lines.emplace_back(20000, 'x');
    for (int i = 0; i < 5; ++i) list.SetLine(list.Count() - 1, model.lines.back());
  }

  void EraseEmpty(TStringList& list, TModel& model) {
    list.EraseEmptyLines();
    std::erase_if(model.lines, [](const std::string& line) { return Trim(line).empty(); });
  }

  /// Lines added from another list live on when that list dies.
  void Shared(TStringList& list, TModel& model) {
    TStringList other;
    other.SetText("one\r\ntwo");
    other.Add("three");
    list.AddStrings(other);
    model.lines.insert(model.lines.end(), {"one", "two", "three"});
  }

  void Compare(const TStringList& list, const TModel& model, const std::string& name) {
    const ptrdiff_t index = model.IndexOfName(name);
    EXPECT_EQ(list.IndexOfName(name), index);
    const std::string line = index < 0 ? "" : model.lines[static_cast<size_t>(index)];
    EXPECT_EQ(list.Value(name), index < 0 ? "" : line.substr(line.find('=') + 1));
    if (index >= 0) {
      EXPECT_EQ(list.Name(static_cast<size_t>(index)), line.substr(0, name.size()));
    }
    std::string text;
    for (const std::string& each : model.lines) text += each + "\r\n";
    EXPECT_EQ(list.Text(), text);
    std::string joined = list.SeparateText("\r\n");
    EXPECT_EQ(model.lines.empty() ? "" : joined + "\r\n", text);
  }

  std::mt19937 random_;
};

TEST(StringList, BehavesLikePlainStrings) {
  for (unsigned seed = 0; seed < 30; ++seed) {
    TPlayer player(seed);
    TStringList list;
    TModel model;
    for (int step = 0; step < 300 && !testing::Test::HasFailure(); ++step) player.Step(list, model);
    ASSERT_FALSE(testing::Test::HasFailure()) << "seed " << seed;
  }
}

TEST(StringList, FindsLinesWithoutCaseAndRefusesIndexesOutside) {
  TStringList list;
  list.SetText("one\r\n\xC4pfel\rTWO\n\ntwo");
  EXPECT_EQ(list.IndexOf("two"), 2);
  EXPECT_EQ(list.IndexOf("\xE4PFEL"), 1);
  EXPECT_EQ(list.IndexOf("tw"), -1);
  list.SetText("x");
  try {
    list.Delete(static_cast<size_t>(-1));
    FAIL();
  } catch (const EListError& error) {
    EXPECT_STREQ(error.what(), "List index out of bounds (-1)");
  }
  EXPECT_THROW(list.Line(1), EListError);
  EXPECT_THROW(list.SetLine(1, ""), EListError);
  EXPECT_THROW(list.Insert(2, ""), EListError);
  list.Insert(1, "y");
  EXPECT_EQ(list.Text(), "x\r\ny\r\n");
}

TEST(StringList, TellsChangesOncePerBracket) {
  TStringList list;
  TCounter counter;
  list.SetObserver(&counter);
  list.Add("a");
  list.SetValue("a", "");  // no such name: nothing changes
  EXPECT_EQ(counter.changes, 1);
  {
    TStringListUpdate outer(list);
    TStringListUpdate inner(list);
    list.Add("b");
    list.Clear();
  }
  EXPECT_EQ(counter.changes, 2);
  { TStringListUpdate nothing(list); }
  list = TStringList();
  EXPECT_EQ(counter.changes, 3);
}

}  // namespace
}  // namespace quarda
