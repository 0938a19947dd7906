// The stand-in head office reads a post's envelope as it arrives and stores the document without
// holding the body: what it stores and keeps must be what an XML parser reads from the envelope,
// however the text is cut into pieces, and a refused post leaves nothing behind.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <pugixml.hpp>

#include "common/error.h"
#include "server/head_office.h"
#include "server/http_client.h"
#include "server/post_arguments.h"
#include "server/soap_call_reader.h"
#include "server/xml_names.h"
#include "support/server_loopback.h"
#include "support/temp_dir.h"

namespace ent {
namespace {

// Everything a reader reports, in order, as one text.
class Recorder : public SoapCallSink {
 public:
  void Call(std::string_view ns, std::string_view local) override {
    log += "call {" + std::string(ns) + "}" + std::string(local) + "\n";
  }
  void ArgumentStart(std::string_view local) override { log += "arg " + std::string(local) + " ["; }
  void ArgumentText(std::string_view piece) override { log += piece; }
  void ArgumentEnd() override { log += "]\n"; }
  std::string log;
};

// What pugixml reads from the same envelope, in the Recorder's form: the call where the head
// office looks for it, and each argument's first text node.
std::string AsPugixmlReadsIt(const std::string& envelope) {
  pugi::xml_document doc;
  EXPECT_TRUE(doc.load_string(envelope.c_str())) << envelope;
  pugi::xml_node call = xml::FirstElement(xml::FirstElement(xml::FirstElement(doc, "Envelope"), "Body"));
  std::string log = "call {" + xml::NameOf(call).ns + "}" + xml::NameOf(call).local + "\n";
  for (pugi::xml_node arg = call.first_child(); arg; arg = arg.next_sibling())
    if (arg.type() == pugi::node_element)
      log += "arg " + xml::LocalName(arg.name()) + " [" + arg.text().get() + "]\n";
  return log;
}

// What the reader reports of `envelope` fed in pieces of `piece` bytes, or "refused: " and why.
std::string ReadInPieces(const std::string& envelope, size_t piece) {
  Recorder sink;
  SoapCallReader reader(sink);
  bool ok = true;
  for (size_t at = 0; at < envelope.size() && ok; at += piece)
    ok = reader.Feed(std::string_view(envelope).substr(at, piece));
  return ok && reader.Finish() ? sink.log : "refused: " + reader.error();
}

TEST(SoapCallReaderTest, ReadsWhatAnXmlParserReadsHoweverTheTextIsCut) {
  const std::string envelope =
      "<?xml version=\"1.0\" encoding=\"utf-8\"?>\r\n<!-- sent by a test -->\n"
      "<env:Envelope xmlns:env=\"http://schemas.xmlsoap.org/soap/envelope/\" xmlns:t='urn:a&amp;b'>"
      "<env:Header><t:sendReport>not the call</t:sendReport></env:Header>\n"
      "<env:Body><t:sendReport xmlns=\"http://tempuri.org/\">\r\n"
      "  <GUID>g-1</GUID>\n"
      "  <t:Passcode>a &lt;b&gt; &amp; &quot;c&quot; &apos;d&apos; &#233;&#xE9; &unknown; & "
      "done</t:Passcode>\n"
      "  <SessionID>  <?pi inside?>after a PI</SessionID>\n"
      "  <ClientID><![CDATA[<raw> & ]]]]></ClientID>\n"
      "  <strErr>line one\r\nline two\rline three&#xD;&#10;end\r&amp;\nafter</strErr>\n"
      "  <Blank>   </Blank><Empty/><Nested><inner>deep</inner>  after</Nested>\n"
      "  <Split>first<!-- cut -->second</Split>\n"
      "  <xmlDoc>&lt;xml&gt;&#xD;\n\t&lt;z:row a='1'/&gt;&lt;/xml&gt;</xmlDoc>\n"
      "</t:sendReport></env:Body></env:Envelope>\n";
  // A namespace declared on an element holds inside it only; the call is in the first Body.
  const std::string scoped =
      "<Envelope xmlns='urn:outer'><Header xmlns='urn:header'><x/></Header><Body><sendReport><a>1</a>"
      "</sendReport></Body><Body><other><b>2</b></other></Body></Envelope>";
  for (const std::string& text : {envelope, scoped, "\xEF\xBB\xBF" + scoped}) {
    const std::string expected = AsPugixmlReadsIt(text);
    for (size_t piece : {text.size(), size_t{1}, size_t{2}, size_t{3}, size_t{7}, size_t{64}})
      EXPECT_EQ(ReadInPieces(text, piece), expected) << "pieces of " << piece;
  }
  // A first Body without a call means no call, whatever a later Body holds.
  EXPECT_EQ(ReadInPieces("<Envelope><Body/><Body><sendReport><a>1</a></sendReport></Body></Envelope>", 8),
            "");
}

TEST(SoapCallReaderTest, RefusesWhatIsNoWellFormedDocument) {
  const std::string call = "<s:Envelope xmlns:s='e'><s:Body><c xmlns='t'><a>x</a></c></s:Body></s:Envelope>";
  std::string deep;
  for (int i = 0; i < 65; ++i) deep += "<d>";
  const std::pair<std::string, std::string> refused[] = {
      {"<!DOCTYPE x [<!ENTITY a 'b'>]>" + call, "document type"},
      {call.substr(0, call.size() - 5), "ends inside markup"},
      {call.substr(0, call.size() - 13), "is not closed"},
      {"<s:Envelope><s:Body></s:Envelope></s:Body>", "does not close"},
      {call + "trailing words", "outside the root"},
      {"words first" + call, "outside the root"},
      {call + "<second/>", "second root"},
      {"<a b></a>", "malformed attribute"},
      {"<a b='1></a>", "ends inside markup"},
      {"", "no root element"},
      {"<a><![CDATA[never ends</a>", "inside a CDATA section"},
      {deep, "nested deeper than 64"},
  };
  for (const auto& [text, why] : refused) {
    const std::string read = ReadInPieces(text, 4);
    EXPECT_TRUE(read.rfind("refused: ", 0) == 0 && read.find(why) != std::string::npos)
        << text << " -> " << read;
  }

  Recorder sink;
  SoapCallReader small_markup(sink, 64, 100);
  EXPECT_FALSE(small_markup.Feed("<a b='" + std::string(200, 'x')));
  EXPECT_NE(small_markup.error().find("markup longer than 100 bytes"), std::string::npos)
      << small_markup.error();
}

TEST(RowTagCounterTest, CountsRowTagsAcrossPieces) {
  const std::string text =
      "<xml><z:row a='1'/>\r\n<z:row\tb='2'/><z:rows/><z:row/><z:row><z:row<z:row>"
      "text &lt;z:row /&gt; <z:ro w/><z:row";
  for (size_t piece : {text.size(), size_t{1}, size_t{3}, size_t{5}}) {
    RowTagCounter counter;
    for (size_t at = 0; at < text.size(); at += piece) counter.Feed(std::string_view(text).substr(at, piece));
    EXPECT_EQ(counter.rows(), 5) << "pieces of "
                                 << piece;  // not z:rows, "<z:row<", the escaped one, the cut one
  }
}

std::string Escaped(const std::string& text) {
  std::string out;
  for (char c : text)
    out += c == '&'    ? "&amp;"
           : c == '<'  ? "&lt;"
           : c == '>'  ? "&gt;"
           : c == '\r' ? "&#xD;"
                       : std::string(1, c);
  return out;
}

std::string Envelope(const std::string& document) {
  return "<?xml version=\"1.0\" encoding=\"utf-8\"?>\r\n<soap:Envelope "
         "xmlns:soap=\"http://schemas.xmlsoap.org/soap/envelope/\"><soap:Body><sendReport "
         "xmlns=\"http://tempuri.org/\"><GUID>g</GUID><Passcode>p</Passcode><SessionID>s9</SessionID>"
         "<ClientID>4</ClientID><strErr>0</strErr><xmlDoc>" +
         Escaped(document) + "</xmlDoc></sendReport></soap:Body></soap:Envelope>";
}

HttpResponse PostTo(const HeadOffice& office, const std::string& body) {
  std::string url = office.WsdlUrl();
  url.resize(url.find('?'));
  return HttpPost(url,
                  {"Content-Type: text/xml; charset=utf-8", "SOAPAction: \"http://tempuri.org/sendReport\""},
                  body, {5, 60, 1 << 20});
}

TEST(HeadOfficeStoreTest, ARefusedPostLeavesNoFileBehind) {
  test::TempDir dir;
  HeadOfficeOptions options;
  options.out_dir = dir.file("posts");
  HeadOffice office(options);
  office.Start("127.0.0.1", 0);
  const std::string document(3 << 20, 'x');  // past the memory limit before the text breaks off

  std::string cut = Envelope(document), other = Envelope(document);
  cut.resize(cut.size() - 40);
  other.replace(other.find("http://tempuri.org/\">"), 19, "urn:other");
  for (const auto& [envelope, fault] :
       {std::pair{cut, "The request is not an XML document."},
        std::pair{other, "does not call sendReport in http://tempuri.org/"}}) {
    const HttpResponse answer = PostTo(office, envelope);
    EXPECT_EQ(answer.status, 500);
    EXPECT_NE(answer.body.find(fault), std::string::npos) << answer.body;
  }
  EXPECT_TRUE(office.Posts().empty());
  EXPECT_TRUE(test::FileNames(dir.file("posts")).empty());

  // An argument before the document that is itself too long for memory is read back whole.
  std::string long_first = Envelope("<xml/>");
  long_first.replace(long_first.find("<GUID>g</GUID>"), 14, "<GUID>" + document + "</GUID>");
  EXPECT_EQ(PostTo(office, long_first).status, 200);
  ASSERT_EQ(office.Posts().size(), 1u);
  EXPECT_EQ(office.Posts()[0].arguments[0].second, document);
  EXPECT_EQ(test::FileText(dir.file("posts/0001.xml")), "<xml/>");
  EXPECT_EQ(test::FileNames(dir.file("posts")),
            (std::vector<std::string>{"0001.json", "0001.xml", "posts.txt"}));
}

}  // namespace
}  // namespace ent
