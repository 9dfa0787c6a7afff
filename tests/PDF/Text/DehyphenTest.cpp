// The plain text filter that joins words split at a line's end, and the hyphen mark of lines.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "PDF/Text/TextExtractorImpl.h"
#include "PDF/Text/TextFeeder.h"
#include "PDF/TextExtractor.h"

namespace PDF = lum::PDF;
using lum::Unicode;

namespace {

std::u16string Filter(const std::u16string& in) {
    std::vector<Unicode> out;
    PDF::Dehyphenate(reinterpret_cast<const Unicode*>(in.data()), in.size(), out);
    return std::u16string(out.begin(), out.end());
}

}  // namespace

TEST(Dehyphenate, Rows) {
    const struct {
        std::u16string in, out;
    } rows[] = {
        {u"exam-\nple is\n", u"example\nis\n"},
        {u"well-\nknown\n", u"wellknown\n"},
        // Each hyphen kind.
        {u"exam\u00AD\nple\n", u"example\n"},
        {u"exam\u2010\nple x\n", u"example\nx\n"},
        {u"exam\u2011\nple x\n", u"example\nx\n"},
        {u"exam\uFF0D\nple x\n", u"example\nx\n"},
        // An en dash is no hyphen.
        {u"exam\u2013\nple\n", u"exam\u2013\nple\n"},
        // A hyphen standing alone stays, with its newline.
        {u"a - \nb\n", u"a -\nb\n"},
        {u"a -\nb\n", u"a -\nb\n"},
        // A hyphen, a blank and a newline: the hyphen stays in the word, the break goes.
        {u"exam- \nple x\n", u"exam-ple\nx\n"},
        // At the very end: hyphen and newline go, nothing follows.
        {u"ab-\n", u"ab"},
        // Rows of blanks keep their last one; newlines of empty lines go.
        {u"a   b\n", u"a b\n"},
        {u"\n\na\n", u"a\n"},
        {u"a\n\n\nb\n", u"a\n\n\nb\n"},
        {u"", u""},
    };
    for (const auto& r : rows) EXPECT_EQ(Filter(r.in), r.out) << lum::test::Utf8(r.in);
}

TEST(Dehyphenate, LineRecordsMarkSplittingHyphens) {
    lum::test::TextFeeder f;
    f.Show("exam-", 100, 700).Show("ple", 100, 688).Show("is -", 100, 676).Show("x", 100, 664);
    f.Finish();
    std::vector<bool> marks;
    for (auto l = PDF::FirstLine(f.store); l.IsValid(); l = l.GetNextLine())
        marks.push_back(l.EndsWithHyphen());
    EXPECT_EQ(marks, (std::vector<bool>{true, false, false, false}));
    // The held line break of the split word comes back at the first blank behind it, even
    // when the word's own line has ended before.
    EXPECT_EQ(f.Text(true), "example\nis\n-\nx\n");
    EXPECT_EQ(f.Text(false), "exam-\nple\nis -\nx\n");
}
