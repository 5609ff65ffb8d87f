// A saved drawing must open in a reader that shares no code with ours: the Python ezdxf
// package, when it is installed.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "dxf/tags/document.h"
#include "support/dxftext.h"
#include "support/ezdxf.h"

namespace corvane::dxf {
namespace {

using corvane::testing::pythonWithEzdxf;

// Runs a script over a file; returns its output, or "ERROR: ..." when it failed.
std::string runScript(const std::string& script, const std::filesystem::path& file) {
  return corvane::testing::runEzdxfScript(script, {file.string()});
}

// Loads with ezdxf and prints each modelspace entity type, and the text of TEXT entities as
// Unicode escapes (no terminal encoding in the way). ezdxf leaves \U+XXXX escapes in place;
// the script decodes them, so what is compared is how the bytes were decoded.
constexpr const char* kScript =
    "import re, sys, ezdxf\n"
    "doc = ezdxf.readfile(sys.argv[1])\n"
    "for e in doc.modelspace():\n"
    "    line = e.dxftype()\n"
    "    if line == \"TEXT\":\n"
    "        text = re.sub(r\"\\\\U\\+([0-9A-Fa-f]{4})\", lambda m: chr(int(m.group(1), 16)), e.dxf.text)\n"
    "        line += \" \" + text.encode(\"unicode_escape\").decode(\"ascii\")\n"
    "    print(line)\n";

TEST(IndependentReader, OpensWhatWeSaveInBothFormatsAndEncodings) {
  if (pythonWithEzdxf().empty()) GTEST_SKIP() << "python3 with ezdxf is not installed";
  const testing::ScratchFolder folder;
  struct Case {
    const char* name;
    std::string version;
    std::string codePage;
    FileFormat format;
  };
  const Case cases[] = {
      {"R2000 cp1252 ASCII", "AC1015", "ANSI_1252", FileFormat::Ascii},
      {"R2000 cp1251 binary", "AC1015", "ANSI_1251", FileFormat::Binary},
      {"R2018 ASCII", "AC1032", "ANSI_1252", FileFormat::Ascii},
      {"R2018 binary", "AC1032", "ANSI_1252", FileFormat::Binary},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    const std::string text = testing::asciiDxf(testing::drawing(
        c.version, {{0, "TEXT"}, {5, "2A"}, {8, "0"}, {10, "0.0"}, {20, "0.0"}, {30, "0.0"}, {40, "1.0"}, {1, "x"},
                    {0, "LINE"}, {5, "2B"}, {8, "0"}, {10, "0.0"}, {20, "0.0"}, {11, "1.0"}, {21, "1.0"}},
        c.codePage));
    auto read = Document::read(text);
    ASSERT_TRUE(read.document) << read.error;
    read.document->setText(*read.document->findHandle(0x2A), 7, L"Gr\u00F6\u00DFe \u0416 \u4E2D");
    const auto path = folder.path() / "drawing.dxf";
    const Status saved = read.document->save(path, SaveOptions{c.format});
    ASSERT_TRUE(saved.ok()) << saved.message();
    EXPECT_EQ(runScript(kScript, path), "TEXT Gr\\xf6\\xdfe \\u0416 \\u4e2d\nLINE\n");
  }
}

TEST(IndependentReader, OpensEverySampleSavedAsBinary) {
  if (pythonWithEzdxf().empty()) GTEST_SKIP() << "python3 with ezdxf is not installed";
  const std::filesystem::path samples = std::filesystem::path(CORVANE_SHARED_DIR) / "samples" / "dxf";
  if (!std::filesystem::is_directory(samples)) GTEST_SKIP() << "no sample drawings";
  const testing::ScratchFolder folder;
  const char* count = "import sys, ezdxf\ndoc = ezdxf.readfile(sys.argv[1])\nprint(len(doc.modelspace()), len(doc.blocks))\n";
  for (const auto& entry : std::filesystem::directory_iterator(samples)) {
    if (entry.path().extension() != ".dxf") continue;
    SCOPED_TRACE(entry.path().filename().string());
    auto read = Document::readFile(entry.path());
    ASSERT_TRUE(read.document) << read.error;
    const auto path = folder.path() / "binary.dxf";
    ASSERT_TRUE(read.document->save(path, SaveOptions{FileFormat::Binary}).ok());
    const std::string fromBinary = runScript(count, path);
    EXPECT_EQ(fromBinary.rfind("ERROR", 0), std::string::npos) << fromBinary;
    EXPECT_EQ(fromBinary, runScript(count, entry.path()));
  }
}

}  // namespace
}  // namespace corvane::dxf
