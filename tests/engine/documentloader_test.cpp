#include "engine/documents/documentloader.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <utility>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "engine/documents/documenttree.h"
#include "engine/messages/failure.h"
#include "host/documents/documentplace.h"
#include "host/documents/veltranscoder.h"
#include "host/messages/messages.h"
#include "tests/scratchfolder.h"

namespace MCVelscore_850 {
namespace {

const std::string kDocument =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<PMML version=\"4.4\">\n"
    "  <Header copyright='&lt;none&gt;'/><GeneralRegressionModel\n"
    "    modelType='regression'>\n"
    "  </GeneralRegressionModel>\n"
    "</PMML>\n";

int CodeOf(const std::function<void()>& work, std::string* text = nullptr)
{
    try {
        work();
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.Kind(), FailureKind::Document);
        if (text != nullptr) *text = failure.what();
        return failure.Code();
    }
    return 0;
}

int LoadCode(const std::string& bytes, std::string* text = nullptr)
{
    return CodeOf([&] { LoadDocumentText(bytes, "m.pmml"); }, text);
}

const xercesc::DOMElement* RootOf(const Document& document)
{
    return document.GetTree().dom->getDocumentElement();
}

std::string Tag(const xercesc::DOMElement* element) { return Utf8FromXml(element->getTagName()); }

TEST(DocumentLoader, ReadsAFile)
{
    const ScratchFolder folder;
    const std::string file = folder.Write("m.pmml", kDocument);
    const Document document = LoadDocument(file);
    EXPECT_EQ(document.File(), file);
    EXPECT_EQ(document.RootName(), "PMML");
    EXPECT_EQ(document.VersionText(), "4.4");
    const xercesc::DOMElement* header = RootOf(document)->getFirstElementChild();
    ASSERT_NE(header, nullptr);
    EXPECT_EQ(Tag(header), "Header");
    EXPECT_EQ(Utf8FromXml(header->getAttribute(XmlFromUtf8("copyright").c_str())), "<none>");
}

TEST(DocumentLoader, ReadsStandardInput)
{
    const ScratchFolder folder;
    const std::string file = folder.Write("m.pmml", kDocument);
    const int saved = ::dup(STDIN_FILENO);
    const int input = ::open(file.c_str(), O_RDONLY);
    ASSERT_GE(input, 0);
    ::dup2(input, STDIN_FILENO);
    ::close(input);
    std::string again;
    EXPECT_EQ(LoadDocument("-").File(), "standard input");
    EXPECT_EQ(CodeOf([] { LoadDocument("-"); }, &again), kEmptyDocument);  // read to its end
    EXPECT_NE(again.find("standard input"), std::string::npos);
    if (saved >= 0) {
        ::dup2(saved, STDIN_FILENO);
        ::close(saved);
    }
}

TEST(DocumentLoader, GivesEachElementTheLineAndColumnOfItsTag)
{
    const Document document = LoadDocumentText(kDocument, "m.pmml");
    const xercesc::DOMElement* root = RootOf(document);
    const DocumentPlace rootPlace = PlaceOf(root);
    EXPECT_EQ(rootPlace.line, 2u);
    EXPECT_EQ(rootPlace.column, 1u);
    // its tag spans two lines
    const DocumentPlace model = PlaceOf(root->getLastElementChild());
    EXPECT_EQ(model.line, 3u);
    EXPECT_EQ(model.column, 37u);
    EXPECT_EQ(model.path, "PMML/GeneralRegressionModel");
}

TEST(DocumentLoader, TakesUtf16AndLatin1AlikeInGuardAndTree)
{
    std::string wide = "\xff\xfe";
    for (const char c : std::string("<PMML version=\"4.3\"/>")) wide.append({c, '\0'});
    EXPECT_EQ(LoadDocumentText(wide, "m").VersionText(), "4.3");
    EXPECT_EQ(LoadDocumentText("<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>"
                               "<PMML version=\"\xe9\"/>",
                               "m")
                  .VersionText(),
              "\xc3\xa9");
}

// The digest is sha256sum's of the same bytes.
TEST(DocumentLoader, KeepsDigestAndTextOfBytesAtHand)
{
    const std::string head = "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><PMML version=\"";
    std::string digest;
    std::string text;
    LoadDocumentText(head + "\xe9\"/>", "m", {}, {.sha256 = &digest, .text = &text});
    EXPECT_EQ(digest, "57be242b1ca896fe3dbfeba99a6566b537914ec5665eb5b747c2f52137244781");
    EXPECT_EQ(text, head + "\xc3\xa9\"/>");
}

TEST(DocumentLoader, HoldsATreeThatMovesWithIt)
{
    Document document = LoadDocumentText(kDocument, "m.pmml");
    const xercesc::DOMElement* root = RootOf(document);
    const Document moved = std::move(document);
    EXPECT_EQ(RootOf(moved), root);
    EXPECT_EQ(moved.VersionText(), "4.4");
}

TEST(DocumentLoader, DocumentsMayGoInAnyOrder)
{
    auto first = std::make_unique<Document>(LoadDocumentText(kDocument, "a"));
    const Document second = LoadDocumentText(kDocument, "b");
    first.reset();
    EXPECT_EQ(Tag(RootOf(second)), "PMML");
    EXPECT_EQ(LoadCode(kDocument), 0);
}

TEST(DocumentLoader, RefusesAFileThatIsNotThere)
{
    std::string text;
    EXPECT_EQ(CodeOf([] { LoadDocument("/no/such/file.pmml"); }, &text), kCannotRead);
    EXPECT_NE(text.find("/no/such/file.pmml"), std::string::npos);
    EXPECT_NE(text.find(std::strerror(ENOENT)), std::string::npos);
}

TEST(DocumentLoader, RefusesADirectory)
{
    const ScratchFolder folder;
    std::string text;
    EXPECT_EQ(CodeOf([&] { LoadDocument(folder.Path()); }, &text), kCannotRead);
    EXPECT_NE(text.find(std::strerror(EISDIR)), std::string::npos);
}

TEST(DocumentLoader, RefusesAFileThatMayNotBeRead)
{
    // Opens for anybody, root too; its first page can be read by nobody.
    EXPECT_EQ(CodeOf([] { LoadDocument("/proc/self/mem"); }), kCannotRead);

    const ScratchFolder folder;
    const std::string file = folder.Write("m.pmml", kDocument);
    std::filesystem::permissions(file, std::filesystem::perms::none);
    const bool mayReadEverything = ::access(file.c_str(), R_OK) == 0;
    EXPECT_EQ(CodeOf([&] { LoadDocument(file); }), mayReadEverything ? 0 : kCannotRead);
}

TEST(DocumentLoader, RefusesAnEmptyFile)
{
    const ScratchFolder folder;
    const std::string file = folder.Write("m.pmml", "");
    EXPECT_EQ(CodeOf([&] { LoadDocument(file); }), kEmptyDocument);
    EXPECT_EQ(LoadCode(""), kEmptyDocument);
}

TEST(DocumentLoader, RefusesAFileOverTheLimitUnread)
{
    const ScratchFolder folder;
    // 300 MB that take no room on the disk; their zero bytes are no document either
    const std::string file = folder.Write("m.pmml", "");
    std::filesystem::resize_file(file, 300'000'000);
    EXPECT_EQ(CodeOf([&] { LoadDocument(file); }), kDocumentTooLarge);
}

TEST(DocumentLoader, RefusesEveryTruncation)
{
    for (size_t size = 1; size + 1 < kDocument.size(); ++size) {
        EXPECT_EQ(LoadCode(kDocument.substr(0, size)), kNotWellFormed) << "cut at " << size;
    }
}

TEST(DocumentLoader, AnySpoiledCharacterIsTakenOrRefusedWithACode)
{
    // Whatever a letter, bracket, quote, blank or byte of another encoding does to the document, it
    // ends in a document or in one of three refusals.
    for (size_t at = 0; at < kDocument.size(); ++at) {
        for (const char c : {'<', '>', '&', '"', '\'', '/', '!', ' ', 'x', '\xff', '\0'}) {
            std::string spoiled = kDocument;
            spoiled[at] = c;
            const int code = LoadCode(spoiled);
            EXPECT_TRUE(code == 0 || code == kNotWellFormed || code == kNotAModelDocument)
                << code << " for " << static_cast<int>(c) << " at " << at;
        }
    }
}

TEST(DocumentLoader, RefusesAVersionOfXmlThatDoesNotExist)
{
    // the guard takes it, the tree's parser doesn't
    EXPECT_EQ(LoadCode("<?xml version=\"7.0\"?><PMML version='4.4'/>"), kNotWellFormed);
}

TEST(DocumentLoader, PassesTheLimitsOn)
{
    DocumentLimits limits;
    limits.elements = 3;
    EXPECT_EQ(CodeOf([&] { LoadDocumentText(kDocument, "m", limits); }), 0);
    limits.elements = 2;
    EXPECT_EQ(CodeOf([&] { LoadDocumentText(kDocument, "m", limits); }), kTooManyElements);
}

TEST(DocumentLoader, RefusesARootThatIsNoModelDocument)
{
    std::string text;
    EXPECT_EQ(LoadCode("<html/>", &text), kNotAModelDocument);
    EXPECT_NE(text.find("html"), std::string::npos);
    EXPECT_EQ(LoadCode("<pmml/>"), kNotAModelDocument);
    EXPECT_EQ(LoadCode("<PMML/>"), 0);
    EXPECT_EQ(LoadCode("<zelt-ml/>"), 0);
    EXPECT_EQ(LoadCode("<p:PMML xmlns:p='http://www.dmg.org/PMML-4_4'/>"), 0);
}

TEST(DocumentLoader, NeverReadsAFileThroughAnEntity)
{
    const ScratchFolder folder;
    const std::string secret = folder.Write("secret.txt", "secret");
    EXPECT_EQ(LoadCode("<!DOCTYPE PMML [<!ENTITY s SYSTEM \"" + secret +
                       "\">]>"
                       "<PMML version='4.4'>&s;</PMML>"),
              kDoctype);
}

TEST(DocumentTree, KnowsNoEntityEvenWithoutTheGuard)
{
    const ScratchFolder folder;
    const std::string secret = folder.Write("secret.txt", "secret");
    const XercesSession session;
    for (const std::string& declaration :
         {"<!ENTITY s SYSTEM \"" + secret + "\">", std::string("<!ENTITY s 'secret'>")}) {
        EXPECT_EQ(CodeOf([&] {
                      BuildTree("<!DOCTYPE PMML [" + declaration + "]><PMML>&s;</PMML>", "m", {});
                  }),
                  kNotWellFormed);
    }
}

#if !defined(__SANITIZE_ADDRESS__)
// What a process needs beyond what it had, in a child that may not have more than `bytes`: the
// code of the refusal, less the first of the document's codes; 255 for anything else.
int CodeWithin(rlim_t bytes, const std::string& file)
{
    const pid_t child = ::fork();
    if (child == 0) {
        std::ifstream statm("/proc/self/statm");
        rlim_t pages = 0;
        statm >> pages;
        const rlim_t bound = pages * static_cast<rlim_t>(::sysconf(_SC_PAGESIZE)) + bytes;
        const rlimit limit{bound, bound};
        if (::setrlimit(RLIMIT_AS, &limit) != 0) ::_exit(254);
        try {
            LoadDocument(file);
        } catch (const Failure& failure) {
            ::_exit(failure.Code() - kCannotRead);
        } catch (...) {
        }
        ::_exit(255);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) + kCannotRead : 0;
}

std::string Times(size_t count, const std::string& text)
{
    std::string out;
    out.reserve(count * text.size());
    for (size_t i = 0; i < count; ++i) out += text;
    return out;
}

TEST(DocumentLoaderAttack, EachIsRefusedWithin64Mebibytes)
{
    constexpr rlim_t kBound = rlim_t{64} << 20;
    const ScratchFolder folder;
    std::string attributes = "<PMML";
    for (int i = 0; i < 400'000; ++i) attributes += " a" + std::to_string(i) + "=''";
    const std::pair<std::string, int> attacks[] = {
        {Times(1'000'000, "<a>"), kTooDeep},
        {attributes + "/>", kTokenTooLong},
        {"<PMML version=\"" + std::string(200'000'000, 'x') + "\"/>", kTokenTooLong},
        {"<PMML>" + std::string(250'000'000, 'x') + "</PMML>", kTextTooLong},
        {"<!DOCTYPE a SYSTEM \"file:///dev/zero\"><a/>", kDoctype},
        {"<!DOCTYPE a [<!ENTITY b \"" + std::string(1000, 'x') + "\">]><a/>", kDoctype},
    };
    for (const auto& [bytes, code] : attacks) {
        EXPECT_EQ(CodeWithin(kBound, folder.Write("m.pmml", bytes)), code);
    }
}
#endif

}  // namespace
}  // namespace MCVelscore_850
