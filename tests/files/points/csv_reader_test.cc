#include "files/points/csv_reader.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "files/words/user_error.h"

using namespace geomath_files;

namespace {

struct Close {
  void operator()(std::FILE* file) const { std::fclose(file); }
};

// A file with that text, read by a reader.
struct Text {
  explicit Text(const std::string& text) : file(std::tmpfile()) {
    std::fwrite(text.data(), 1, text.size(), file.get());
    std::rewind(file.get());
    reader = std::make_unique<CsvReader>(file.get(), "test.csv");
  }

  std::vector<std::vector<std::string>> Rows() {
    std::vector<std::vector<std::string>> rows;
    CsvRow row;
    while (reader->Next(row)) {
      rows.emplace_back();
      for (std::size_t i = 0; i < row.fields.size(); ++i) rows.back().push_back(row.Value(i));
    }
    return rows;
  }

  std::unique_ptr<std::FILE, Close> file;
  std::unique_ptr<CsvReader> reader;
};

using Rows = std::vector<std::vector<std::string>>;

}  // namespace

TEST(CsvReader, SplitsFieldsAndKeepsRows) {
  EXPECT_EQ(Text("a,b\n1,2\n").Rows(), (Rows{{"a", "b"}, {"1", "2"}}));
  EXPECT_EQ(Text("a,b\r\n1,\r\n").Rows(), (Rows{{"a", "b"}, {"1", ""}}));
  EXPECT_EQ(Text("\xEF\xBB\xBF"
                 "a;b\n1,5;2")
                .Rows(),
            (Rows{{"a", "b"}, {"1,5", "2"}}));
  EXPECT_EQ(Text("a\tb\n,\tx\n").Rows(), (Rows{{"a", "b"}, {",", "x"}}));
  EXPECT_EQ(Text("\"x,\"\"y\"\"\",b\n\"two\nlines\",\n").Rows(),
            (Rows{{"x,\"y\"", "b"}, {"two\nlines", ""}}));
  // Seconds of arc are no quotation.
  EXPECT_EQ(Text("a,b\n1'2\",3\n4'5\",6\n").Rows(),
            (Rows{{"a", "b"}, {"1'2\"", "3"}, {"4'5\"", "6"}}));
  EXPECT_EQ(Text("").Rows(), Rows{});
  EXPECT_EQ(Text("\n").Rows(), Rows{});
  EXPECT_EQ(Text("a\n\nb\n").Rows(), (Rows{{"a"}, {""}, {"b"}}));
}

TEST(CsvReader, FindsTheSeparator) {
  struct Case {
    const char* text;
    std::size_t fields;  // known, or 0
    char separator;
  };
  constexpr Case cases[] = {
      {"a;b,c;d\n", 0, ';'},
      {"a|b\n", 0, '|'},
      {"Point No,Lat Deg\n", 0, ','},
      {"\"a;b;c\",d\n", 0, ','},
      {"a  b\tc \n", 0, '\t'},
      {"  a  b c\r\n", 0, ' '},
      {"sep=|\na;b|c;d\n", 0, '|'},
      // Rows without header, with decimal commas.
      {"P1;5932000,12;3500000,45;12,5\n", 4, ';'},
      {"P1 5932000,12 3500000,45 12,5\n", 4, ' '},
      {"P 1, 5932000.12, 3500000.45, 12.5\n", 4, ','},
      {"P1\t5932000,12\t3500000,45\t12,5\n", 4, '\t'},
  };
  for (const Case& c : cases) {
    std::unique_ptr<std::FILE, Close> file(std::tmpfile());
    std::fputs(c.text, file.get());
    std::rewind(file.get());
    EXPECT_EQ(CsvReader(file.get(), "test.csv", c.fields).Separator(), c.separator) << c.text;
  }
}

TEST(CsvReader, TakesRunsOfBlanksAsOneSeparator) {
  EXPECT_EQ(Text("a  b c\n  1 \t2   3  \r\n\"x y\" \"\" 4\n   \n").Rows(),
            (Rows{{"a", "b", "c"}, {"1", "2", "3"}, {"x y", "", "4"}, {}}));
}

TEST(CsvReader, KeepsWhatStandsBeforeTheFirstRow) {
  Text text("\xEF\xBB\xBFsep=;\r\n# made by hand, \"today\r\n\r\na;b,c\r\n1;2\r\n");
  EXPECT_EQ(text.reader->Preamble(), "sep=;\r\n# made by hand, \"today\r\n\r\n");
  EXPECT_EQ(text.reader->LineEnd(), "\r\n");
  CsvRow row;
  ASSERT_TRUE(text.reader->Next(row));
  EXPECT_EQ(row.line, 4);
  EXPECT_EQ(row.fields.size(), 2u);
}

TEST(CsvReader, CountsLinesAcrossQuotedOnesAndBuffers) {
  const std::string filler(100000, 'x');  // longer than the buffer
  Text text("a,b\n\"1\n\n\",2\n" + filler + ",3\n4,5\n");
  CsvRow row;
  std::vector<long long> lines;
  while (text.reader->Next(row)) lines.push_back(row.line);
  EXPECT_EQ(lines, (std::vector<long long>{1, 2, 5, 6}));
}

// Quotations over the ends of the blocks that are read, and rows that are longer than these.
TEST(CsvReader, CutsBlocksBetweenRows) {
  Rows expected;
  std::string text;
  for (std::size_t i = 0; i < 3000; ++i) {
    const std::string lines(i % 500 == 499 ? 200000 : i % 97, '\n');
    expected.push_back({std::to_string(i), "a\"" + lines + ",", "4'5\"", ""});
    text += expected.back()[0] + ",\"a\"\"" + lines + ",\",4'5\",\"\"\n";
  }
  EXPECT_TRUE(Text(text).Rows() == expected);

  Text together(text);
  CsvRows rows;
  CsvRow row;
  std::size_t count = 0, blocks = 0;
  for (long long line = 1; together.reader->Next(rows); ++blocks)
    for (; rows.Take(',', row); ++count) {
      ASSERT_EQ(row.line, line);
      ASSERT_EQ(row.Value(1), expected[count][1]);
      line += 1 + std::count(row.text.begin(), row.text.end(), '\n');
    }
  EXPECT_EQ(count, expected.size());
  EXPECT_GT(blocks, 4u);
}

TEST(CsvReader, RefusesWhatIsNoCsvText) {
  EXPECT_THROW(Text("\xFF\xFE"
                    "a"),
               UserError);
  EXPECT_THROW(Text(std::string("GIF\0\0", 5)), UserError);
  Text open("a,b\n\"1,2\n3,4\n");
  CsvRow row;
  EXPECT_TRUE(open.reader->Next(row));
  EXPECT_THROW(open.reader->Next(row), UserError);
}

TEST(CsvReader, QuotesOnlyWhatNeedsIt) {
  EXPECT_EQ(CsvField("007", ','), "007");
  EXPECT_EQ(CsvField("a,b", ','), "\"a,b\"");
  EXPECT_EQ(CsvField("a,b", ';'), "a,b");
  EXPECT_EQ(CsvField("say \"x\"", ','), "\"say \"\"x\"\"\"");
}
