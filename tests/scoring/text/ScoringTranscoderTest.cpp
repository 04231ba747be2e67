#include <string>

#include "scoring/text/ScoringTranscoder.h"
#include "tests/scoring/text/XmlPlatform.h"

namespace KelScoring_20 {
namespace {

TEST(ScoringTranscoder, NoName_MeansUtf8) {
  for (const char* name : {static_cast<const char*>(nullptr), "", "UTF-8"}) {
    EXPECT_EQ(ScoringTranscoder(name).TranscodeTo(u"caf\u00E9"), "caf\xC3\xA9");
  }
  EXPECT_EQ(ScoringTranscoder().TranscodeTo(u"\U0001F600"), "\xF0\x9F\x98\x80");
}

TEST(ScoringTranscoder, UnknownName_GivesEmptyTexts) {
  const std::string tooLong(5000, 'x');
  for (const char* name : {"no-such-encoding", " ", "\xFF\xFE", tooLong.c_str()}) {
    const ScoringTranscoder transcoder(name);
    EXPECT_FALSE(transcoder.IsValid()) << name;
    EXPECT_EQ(transcoder.TranscodeTo(u"text"), "") << name;
  }
}

TEST(ScoringTranscoder, NullAndEmptyText_GiveEmptyText) {
  const ScoringTranscoder transcoder;
  ASSERT_TRUE(transcoder.IsValid());
  EXPECT_EQ(transcoder.TranscodeTo(nullptr), "");
  EXPECT_EQ(transcoder.TranscodeTo(u""), "");
}

TEST(ScoringTranscoder, CharacterThatTheEncodingLacks_LosesItsBlock) {
  const ScoringTranscoder latin1("ISO-8859-1");
  EXPECT_EQ(latin1.TranscodeTo(u"caf\u00E9"), "caf\xE9");
  EXPECT_EQ(latin1.TranscodeTo(u"in front \u20AC"), "");
  EXPECT_EQ(latin1.TranscodeTo((std::u16string(1500, u'x') + u"\u20AC").c_str()), std::string(1000, 'x'));
  EXPECT_EQ(latin1.TranscodeTo(u"next"), "next");
}

// A converter that eats a character of which only the first byte fits keeps the second one for its next call. That
// byte used to be lost, and stood in front of the next text.
TEST(ScoringTranscoder, CharacterAcrossTheBlocksEnd_StaysWhole) {
  const struct {
    const char* encoding;
    std::string character;  // HIRAGANA LETTER A
  } cases[] = {{"Shift_JIS", "\x82\xA0"}, {"GB18030", "\xA4\xA2"}, {"UTF-8", "\xE3\x81\x82"}};
  for (const auto& row : cases) {
    const ScoringTranscoder transcoder(row.encoding);
    ASSERT_TRUE(transcoder.IsValid()) << row.encoding;
    for (const std::size_t count : {499U, 500U, 501U, 999U, 1000U, 1001U}) {
      std::string expected = "a";
      for (std::size_t i = 0; i < count; ++i) expected += row.character;
      std::u16string text(count + 1, u'\u3042');
      text.front() = u'a';
      EXPECT_EQ(transcoder.TranscodeTo(text.c_str()), expected) << row.encoding;
      EXPECT_EQ(transcoder.TranscodeTo(u"xyz"), "xyz") << row.encoding << " after " << count;
    }
  }
}

TEST(ScoringTranscoder, HalfAPairAtTheEnd_DoesNotReachTheNextText) {
  const XMLCh text[] = {u'a', u'b', XMLCh(0xD83D), 0};
  for (const char* encoding : {"UTF-8", "GB18030"}) {
    const ScoringTranscoder transcoder(encoding);
    EXPECT_EQ(transcoder.TranscodeTo(text), "ab") << encoding;
    EXPECT_EQ(transcoder.TranscodeTo(u"xyz"), "xyz") << encoding;
  }
}

}  // namespace
}  // namespace KelScoring_20
