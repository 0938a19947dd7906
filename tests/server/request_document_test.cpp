#include "server/request_document.h"

#include <gtest/gtest.h>

#include <string>

namespace ent {
namespace {

TEST(RequestDocumentTest, ElementTextJoinsDescendantTextsInOrderWithoutRecursion) {
  pugi::xml_document doc;
  ASSERT_TRUE(doc.load_string("<n>\n a<b>1<c>2</c><!-- no -->3</b><?pi no?><![CDATA[4 ]]>\t\n</n><m>x</m>"));
  EXPECT_EQ(ElementText(doc.child("n")), "a1234");
  EXPECT_EQ(ElementText(doc.child("n").child("b")), "123");  // stops at the element's end
  EXPECT_EQ(ElementText(pugi::xml_node()), "");

  // Far deeper than a request may be (loaded here without the depth check): a recursive reader
  // runs out of stack long before the end.
  const int levels = 200000;
  std::string deep = "<s>";
  for (int i = 0; i < levels; ++i) deep += "<a>";
  deep += "id";
  for (int i = 0; i < levels; ++i) deep += "</a>";
  deep += "</s>";
  ASSERT_TRUE(doc.load_string(deep.c_str()));
  EXPECT_EQ(ElementText(doc.child("s")), "id");
  EXPECT_NE(LoadRequestDocument(deep, doc), "");
  EXPECT_FALSE(doc.first_child());
}

}  // namespace
}  // namespace ent
