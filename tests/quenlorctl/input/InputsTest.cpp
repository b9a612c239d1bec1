#include "quenlorctl/input/Inputs.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "tests/quenlorctl/support/Documents.h"

namespace quenlor::ctl {
namespace {

using Texts = std::vector<std::string>;

// A folder with documents, and the usual programs that pack them.
class Inputs : public ::testing::Test {
 protected:
  void SetUp() override {
    std::string pattern = ::testing::TempDir() + "inputsXXXXXX";
    m_folder = mkdtemp(pattern.data());
    write("a.xml", hardware(""));
    write("two.xml", hardware("") + hardware(""));
    shell("gzip -k a.xml two.xml && zstd -q -k a.xml two.xml");
  }
  void TearDown() override { std::filesystem::remove_all(m_folder); }

  std::string path(const std::string& name) const { return m_folder + "/" + name; }
  void write(const std::string& name, const std::string& bytes) const {
    std::ofstream(path(name)) << bytes;
  }
  std::string bytes(const std::string& name) const {
    std::ifstream file(path(name));
    std::stringstream text;
    text << file.rdbuf();
    return text.str();
  }
  void shell(const std::string& commands) const {
    // NOLINTNEXTLINE(cert-env33-c): programs of the test machine
    ASSERT_EQ(0, std::system(("cd " + m_folder + " && " + commands).c_str())) << commands;
  }

  // Names of the documents, without the folder.
  Texts filesOf(const ReadAll& read) const {
    Texts files;
    for (const Document& document : read.documents) {
      files.push_back(document.file().substr(m_folder.size() + 1));
    }
    return files;
  }

  std::string m_folder;
};

TEST_F(Inputs, filesAreReadWhateverTheyArePackedWith) {
  for (const char* name : {"two.xml", "two.xml.gz", "two.xml.zst"}) {
    const ReadAll read = readFiles({path(name)});
    EXPECT_EQ((Texts{name, name}), filesOf(read));
    EXPECT_TRUE(read.troubles.empty()) << name;
  }
}

TEST_F(Inputs, packedFilesOneAfterAnotherAreOneInput) {
  shell("cat a.xml.gz two.xml.gz > many.gz && cat a.xml.zst two.xml.zst > many.zst");
  EXPECT_EQ(3U, readFiles({path("many.gz")}).documents.size());
  EXPECT_EQ(3U, readFiles({path("many.zst")}).documents.size());
}

TEST_F(Inputs, membersOfATarAreNamed) {
  shell(
      "mkdir d && cp two.xml.zst d && ln -s a.xml link && tar cf t.tar a.xml d link a.xml.gz"
      " && gzip -k t.tar && zstd -q -k t.tar");
  for (const std::string name : {"t.tar", "t.tar.gz", "t.tar.zst"}) {
    const ReadAll read = readFiles({path(name)});
    EXPECT_EQ((Texts{name + ":a.xml", name + ":d/two.xml.zst", name + ":d/two.xml.zst",
                     name + ":a.xml.gz"}),
              filesOf(read));
    EXPECT_TRUE(read.troubles.empty()) << name;
  }
}

TEST_F(Inputs, damagedMemberDoesNotHideTheOthers) {
  write("bad.xml", "<Hardware>");
  write("bad.gz", bytes("two.xml.gz").substr(0, 30));
  shell("tar cf inner.tar a.xml && tar cf t.tar bad.xml inner.tar bad.gz a.xml");
  const ReadAll read = readFiles({path("t.tar")});
  EXPECT_EQ(Texts{"t.tar:a.xml"}, filesOf(read));
  EXPECT_EQ((Texts{"1:11: the document is cut off", "0:0: an archive in an archive is not taken",
                   "0:0: gzip: cut off"}),
            read.texts());
}

TEST_F(Inputs, fileThatCannotBeReadDoesNotHideTheOthers) {
  const ReadAll read = readFiles({path("none"), m_folder, path("a.xml")});
  EXPECT_EQ(Texts{"a.xml"}, filesOf(read));
  EXPECT_EQ((Texts{"0:0: No such file or directory", "0:0: Is a directory"}), read.texts());
}

// Whatever is missing at the end: an error, and what came before it.
TEST_F(Inputs, packedFileThatIsCutOffIsTold) {
  for (const char* name : {"two.xml.gz", "two.xml.zst"}) {
    const std::string whole = bytes(name);
    for (size_t size = 1; size < whole.size(); ++size) {
      const ReadAll read = readAll(whole.substr(0, size));
      EXPECT_FALSE(read.troubles.empty()) << name << " of " << size;
    }
  }
}

TEST_F(Inputs, packedFileThatIsDamagedIsTold) {
  std::string gzip = bytes("two.xml.gz");
  gzip[gzip.size() - 6] ^= 1;  // the checksum
  EXPECT_EQ("gzip: incorrect data check", readAll(gzip).troubles.at(0).text);
  std::string zstd = bytes("two.xml.zst");
  zstd[zstd.size() - 1] ^= 1;
  EXPECT_EQ(1U, readAll(zstd).troubles.size());
}

TEST_F(Inputs, tarThatIsCutOffIsTold) {
  shell("tar cf t.tar a.xml two.xml");
  const ReadAll read = readAll(bytes("t.tar").substr(0, 1024 + 520));
  EXPECT_FALSE(read.troubles.empty());
  EXPECT_EQ(1U, read.documents.size());
}

TEST_F(Inputs, bombIsRefused) {
  shell(
      "head -c 20000000 /dev/zero | gzip > bomb.gz; head -c 20000000 /dev/zero | zstd -q > "
      "bomb.zst");
  for (const char* name : {"bomb.gz", "bomb.zst"}) {
    std::vector<std::string> texts;
    InputSinks sinks;
    sinks.document = [](Document&, const std::string&) {};
    sinks.trouble = [&](const Trouble& trouble) { texts.push_back(trouble.text); };
    readInputs({path(name)}, sinks);
    ASSERT_FALSE(texts.empty());
    EXPECT_EQ("expands to more than 200 times its size", texts.back()) << name;
  }
}

TEST_F(Inputs, whatIsSmallMayExpandAsMuchAsItLikes) {
  shell("(cat a.xml; head -c 8388608 /dev/zero | tr '\\0' ' ') | gzip > blank.gz");
  EXPECT_TRUE(readFiles({path("blank.gz")}).troubles.empty());
}

TEST_F(Inputs, windowThatNeedsTooMuchMemoryIsRefused) {
  shell("head -c 1000 /dev/urandom | zstd -q -1 --long=27 > long.zst");
  const ReadAll read = readFiles({path("long.zst")});
  ASSERT_FALSE(read.troubles.empty());
  EXPECT_EQ("zstd: Frame requires too much memory for decoding", read.troubles.back().text);
}

}  // namespace
}  // namespace quenlor::ctl
