#include "data/rowset_xml.h"

#include <gtest/gtest.h>

#include <cfloat>
#include <pugixml.hpp>
#include <sstream>

#include "common/error.h"
#include "data/recordset.h"

using ent::Currency;
using ent::DataType;
using ent::DateTime;
using ent::Field;
using ent::Variant;

namespace {

// Expected bytes written the way `cat -A` shows them: "^I" is a TAB, each line break is CR LF.
std::string Bytes(std::string_view text) {
  std::string out;
  for (size_t i = 0; i < text.size(); ++i) {
    if (text.substr(i, 2) == "^I") {
      out += '\t';
      ++i;
    } else {
      out += text[i] == '\n' ? "\r\n" : std::string(1, text[i]);
    }
  }
  return out;
}

// A whole document: the fixed head, the given AttributeType elements, the fixed schema tail, and
// the rs:data content.
std::string Document(std::string_view attribute_types, std::string_view data) {
  return Bytes(R"(<xml xmlns:s='uuid:BDC6E3F0-6DA3-11d1-A2A3-00AA00C14882'
^Ixmlns:dt='uuid:C2F41010-65B3-11d1-A29F-00AA00C14882'
^Ixmlns:rs='urn:schemas-microsoft-com:rowset'
^Ixmlns:z='#RowsetSchema'>
<s:Schema id='RowsetSchema'>
^I<s:ElementType name='row' content='eltOnly' rs:updatable='true'>
)") + Bytes(attribute_types) +
         Bytes(R"(^I^I<s:extends type='rs:rowbase'/>
^I</s:ElementType>
</s:Schema>
<rs:data>
)") + Bytes(data) +
         Bytes(R"(</rs:data>
</xml>)");
}

std::string Write(const std::vector<Field>& fields, const std::vector<std::vector<Variant>>& rows,
                  bool pending = false) {
  std::vector<ent::XmlRow> xml_rows;
  for (const auto& r : rows) xml_rows.push_back({&r, pending});
  std::ostringstream out;
  ent::WriteRowsetXml(out, fields, xml_rows);
  return out.str();
}

// The attribute text one value is written as, in a column of the given description.
std::string ValueText(Field field, const Variant& value) {
  field.name = "V";
  std::string xml = Write({field}, {{value}});
  size_t start = xml.find("<z:row V='");
  if (start == std::string::npos) return "(none)";
  start += 10;
  return xml.substr(start, xml.find("'/>", start) - start);
}

// ValueText of each value, separated by '|'.
std::string ValueTexts(const Field& field, const std::vector<Variant>& values) {
  std::string out;
  for (const Variant& value : values) out += (out.empty() ? "" : "|") + ValueText(field, value);
  return out;
}

Field QueryColumn(const char* name, DataType type, bool nullable = true) {
  Field f;
  f.name = name;
  f.type = type;
  f.may_be_null = nullable;
  return f;
}

}  // namespace

// Rows added to a free-standing rowset stay in one rs:insert block; a save writes only the rows
// its filter shows. Names that are no plain XML names, or repeat one without regard to case, are
// written as c<index> (with a suffix where a column really has that name).
TEST(RowsetXml, FabricatedTypesAsTheLibraryWritesThem) {
  ent::Recordset rs;
  rs.AppendField(ent::AppendedField("ID", DataType::kInteger));
  rs.AppendField(ent::AppendedField("Paid & Due", DataType::kBoolean));
  rs.AppendField(ent::AppendedField("c4", DataType::kCurrency));
  rs.AppendField(ent::AppendedField("id", DataType::kDouble));
  rs.AppendField(ent::AppendedField("1When", DataType::kDateTime));
  rs.AppendField(ent::AppendedField("Total"));
  rs.Open();
  const Variant rows[3][6] = {{1, true, Currency::FromDecimalText("1234.56"), 3.14159,
                               DateTime::FromParts(2001, 2, 3, 4, 5, 6), "1,234.50"},
                              {-2, false, Currency::FromDecimalText("-7.89"), -0.25,
                               DateTime::FromParts(1999, 12, 31, 23, 59, 58), Variant::Null()},
                              {3, true, Currency(), 0.0, DateTime(), "[b]TOTAL"}};
  for (const auto& row : rows) {
    rs.AddNew();
    for (size_t i = 0; i < 6; ++i) rs.Set(i, row[i]);
    rs.Update();
  }
  EXPECT_EQ(rs.SaveToString(), Document(R"(^I^I<s:AttributeType name='ID' rs:number='1' rs:write='true'>
^I^I^I<s:datatype dt:type='int' dt:maxLength='4' rs:precision='0' rs:fixedlength='true' rs:maybenull='false'/>
^I^I</s:AttributeType>
^I^I<s:AttributeType name='c1' rs:name='Paid &#x26; Due' rs:number='2' rs:write='true'>
^I^I^I<s:datatype dt:type='boolean' dt:maxLength='2' rs:precision='0' rs:fixedlength='true' rs:maybenull='false'/>
^I^I</s:AttributeType>
^I^I<s:AttributeType name='c4' rs:number='3' rs:write='true'>
^I^I^I<s:datatype dt:type='number' rs:dbtype='currency' dt:maxLength='8' rs:precision='0' rs:fixedlength='true'
^I^I^I rs:maybenull='false'/>
^I^I</s:AttributeType>
^I^I<s:AttributeType name='c3' rs:name='id' rs:number='4' rs:write='true'>
^I^I^I<s:datatype dt:type='float' dt:maxLength='8' rs:precision='0' rs:fixedlength='true' rs:maybenull='false'/>
^I^I</s:AttributeType>
^I^I<s:AttributeType name='c4_1' rs:name='1When' rs:number='5' rs:write='true'>
^I^I^I<s:datatype dt:type='dateTime' rs:dbtype='variantdate' dt:maxLength='16' rs:precision='0' rs:fixedlength='true'
^I^I^I rs:maybenull='false'/>
^I^I</s:AttributeType>
^I^I<s:AttributeType name='Total' rs:number='6' rs:write='true'>
^I^I^I<s:datatype dt:type='string' rs:dbtype='str' dt:maxLength='50' rs:precision='0' rs:fixedlength='true' rs:maybenull='false'/>
^I^I</s:AttributeType>
)",
                                        R"(^I<rs:insert>
^I^I<z:row ID='1' c1='True' c4='1234.56' c3='3.1415899999999999' c4_1='2001-02-03T04:05:06' Total='1,234.50'/>
^I^I<z:row ID='-2' c1='False' c4='-7.89' c3='-0.25' c4_1='1999-12-31T23:59:58'/>
^I^I<z:row ID='3' c1='True' c4='0' c3='0' c4_1='1899-12-30T00:00:00' Total='[b]TOTAL'/>
^I</rs:insert>
)"));
  const auto data = [&rs](const char* filter) {
    rs.SetFilter(filter);
    const std::string xml = rs.SaveToString();
    return xml.substr(xml.find("<rs:data>"));
  };
  EXPECT_EQ(data("ID <> -2 and ID <> 3"), Bytes(R"(<rs:data>
^I<rs:insert>
^I^I<z:row ID='1' c1='True' c4='1234.56' c3='3.1415899999999999' c4_1='2001-02-03T04:05:06' Total='1,234.50'/>
^I</rs:insert>
</rs:data>
</xml>)"));
  EXPECT_EQ(data("ID = 0"), "<rs:data>\r\n</rs:data>\r\n</xml>");
}

TEST(RowsetXml, QueryColumnsDescribeTheirSourceAndLeaveNullsOut) {
  Field id = QueryColumn("OrderId", DataType::kInteger, false);
  id.base_catalog = "Shop";
  id.base_table = "SalesOrders";
  id.base_column = "OrderId";
  id.key_column = id.autoincrement = true;
  Field note = QueryColumn("LineComment", DataType::kVarChar);
  note.defined_size = 160;
  note.base_table = "SalesOrders";
  note.base_column = "LineComment";
  Field price = QueryColumn("Price", DataType::kNumeric);
  price.precision = 9;
  price.scale = 4;
  Field code = QueryColumn("Code", DataType::kChar, false);
  code.defined_size = 3;
  const Variant null = Variant::Null();
  const std::string xml =
      Write({id, note, QueryColumn("Amount", DataType::kCurrency, false), price,
             QueryColumn("Created", DataType::kDateTime), QueryColumn("Flag", DataType::kBoolean), code,
             QueryColumn("Memo", DataType::kLongVarChar)},
            {{1, "hello", Currency::FromDecimalText("106.30"), Variant::FromDecimal({"0.0100", 4}),
              DateTime::FromParts(2004, 1, 15), true, "ABC", "long"},
             {2, null, Currency(), null, null, null, "", null}});
  EXPECT_EQ(
      xml,
      Document(
          R"(^I^I<s:AttributeType name='OrderId' rs:number='1' rs:writeunknown='true' rs:basecatalog='Shop' rs:basetable='SalesOrders'
^I^I^I rs:basecolumn='OrderId' rs:keycolumn='true' rs:autoincrement='true'>
^I^I^I<s:datatype dt:type='int' dt:maxLength='4' rs:precision='10' rs:fixedlength='true' rs:maybenull='false'/>
^I^I</s:AttributeType>
^I^I<s:AttributeType name='LineComment' rs:number='2' rs:nullable='true' rs:writeunknown='true' rs:basetable='SalesOrders'
^I^I^I rs:basecolumn='LineComment'>
^I^I^I<s:datatype dt:type='string' rs:dbtype='str' dt:maxLength='160'/>
^I^I</s:AttributeType>
^I^I<s:AttributeType name='Amount' rs:number='3'>
^I^I^I<s:datatype dt:type='number' rs:dbtype='currency' dt:maxLength='8' rs:precision='19' rs:fixedlength='true'
^I^I^I rs:maybenull='false'/>
^I^I</s:AttributeType>
^I^I<s:AttributeType name='Price' rs:number='4' rs:nullable='true'>
^I^I^I<s:datatype dt:type='number' rs:dbtype='numeric' dt:maxLength='19' rs:scale='4' rs:precision='9' rs:fixedlength='true'/>
^I^I</s:AttributeType>
^I^I<s:AttributeType name='Created' rs:number='5' rs:nullable='true'>
^I^I^I<s:datatype dt:type='dateTime' rs:dbtype='timestamp' dt:maxLength='16' rs:scale='3' rs:precision='23' rs:fixedlength='true'/>
^I^I</s:AttributeType>
^I^I<s:AttributeType name='Flag' rs:number='6' rs:nullable='true'>
^I^I^I<s:datatype dt:type='boolean' dt:maxLength='2' rs:fixedlength='true'/>
^I^I</s:AttributeType>
^I^I<s:AttributeType name='Code' rs:number='7'>
^I^I^I<s:datatype dt:type='string' rs:dbtype='str' dt:maxLength='3' rs:fixedlength='true' rs:maybenull='false'/>
^I^I</s:AttributeType>
^I^I<s:AttributeType name='Memo' rs:number='8' rs:nullable='true'>
^I^I^I<s:datatype dt:type='string' rs:dbtype='str' dt:maxLength='2147483647' rs:long='true'/>
^I^I</s:AttributeType>
)",
          R"(^I<z:row OrderId='1' LineComment='hello' Amount='106.3' Price='.0100' Created='2004-01-15T00:00:00' Flag='True'
^I^I Code='ABC' Memo='long'/>
^I<z:row OrderId='2' Amount='0' Code=''/>
)"));
}

// & < > ' " become references; TAB, CR and LF stand raw, other control characters are dropped;
// UTF-8 stays as it is, other bytes are read as Windows-1252 (0x92 a right quote, 0xE9 an e acute).
TEST(RowsetXml, EscapesTextAndKeepsTheDocumentWellFormed) {
  const Field text = ent::AppendedField("T", DataType::kVarChar, 200);
  EXPECT_EQ(
      ValueTexts(text, {"Joe's Garage & <xml> \"q\"",
                        "a\tb\r\nc\x01\x1f"
                        "d\x7f",
                        "\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80", "O\x92Neil caf\xE9 \xED\xA0\x80"}),
      "Joe&#x27;s Garage &#x26; &#x3c;xml&#x3e; &#x22;q&#x22;|a\tb\r\nc"
      "d\x7f|"
      "\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80|O\xE2\x80\x99Neil caf\xC3\xA9 \xC3\xAD\xC2\xA0\xE2\x82\xAC");
  std::string all, printable;
  for (int c = 1; c < 256; ++c) all += static_cast<char>(c);
  for (int c = 0x20; c < 0x80; ++c) printable += static_cast<char>(c);
  pugi::xml_document doc;
  ASSERT_TRUE(doc.load_string(Write({text}, {{all}}).c_str()));
  EXPECT_NE(
      std::string(doc.child("xml").child("rs:data").first_child().attribute("T").value()).find(printable),
      std::string::npos);
}

TEST(RowsetXml, LongRowsWrapBeforeAnAttribute) {
  std::vector<Field> fields;
  std::vector<Variant> row;
  for (int i = 0; i < 12; ++i) {
    fields.push_back(ent::AppendedField("Column_" + std::to_string(i)));
    row.emplace_back(std::string(i == 6 ? 130 : 6, static_cast<char>('a' + i)));
  }
  const std::string xml = Write(fields, {row}, true);
  const size_t start = xml.find("\t\t<z:row ");
  const std::string rows = xml.substr(start, xml.find("\t</rs:insert>") - start);
  EXPECT_EQ(
      rows,
      Bytes(
          R"(^I^I<z:row Column_0='aaaaaa' Column_1='bbbbbb' Column_2='cccccc' Column_3='dddddd' Column_4='eeeeee' Column_5='ffffff'
^I^I^I Column_6=')" +
          std::string(130, 'g') + R"('
^I^I^I Column_7='hhhhhh' Column_8='iiiiii' Column_9='jjjjjj' Column_10='kkkkkk' Column_11='llllll'/>
)"));
}

TEST(RowsetXml, NumbersDatesAndMismatchedKinds) {
  // Singles as "%.8G", doubles as "%.17G".
  EXPECT_EQ(
      ValueTexts(QueryColumn("V", DataType::kDouble),
                 {Variant::Single(5.325f), Variant::Single(0.625f), 0.0, 123456789.5, 5.325, 0.0001, 0.00001,
                  1e16, 1e17, -DBL_MAX, 4.9406564584124654e-324}),
      "5.3249998|0.625|0|123456789.5|5.3250000000000002|0.0001|1.0000000000000001E-05|10000000000000000|"
      "1E+17|-1.7976931348623157E+308|4.9406564584124654E-324");
  EXPECT_EQ(ValueTexts(QueryColumn("V", DataType::kCurrency),
                       {Currency::FromDecimalText("1.0001"), Currency::FromDecimalText("-0.5"),
                        Currency::FromRaw(INT64_MIN)}),
            "1.0001|-0.5|-922337203685477.5808");
  Field numeric = QueryColumn("V", DataType::kNumeric);
  numeric.scale = 4;
  EXPECT_EQ(ValueTexts(numeric, {Variant::FromDecimal({"-0.9999", 4}), Variant::FromDecimal({"0", 0}),
                                 Variant::FromDecimal({"12.34565", 5}), 1.0333, -0.00001, 5,
                                 Currency::FromDecimalText("9.99995")}),
            "-.9999|.0000|12.3457|1.0333|.0000|5.0000|10.0000");
  numeric.scale = 0;
  EXPECT_EQ(ValueTexts(numeric, {Variant::FromDecimal({"-1", 0}), Variant::FromDecimal({"0", 0})}), "-1|0");
  EXPECT_EQ(ValueTexts(QueryColumn("V", DataType::kDateTime),
                       {DateTime::FromParts(1899, 12, 30), DateTime::FromParts(100, 1, 1, 23, 0, 1)}),
            "1899-12-30T00:00:00|0100-01-01T23:00:01");
  // A value of another kind than its column (SQLite keeps what it is given) goes by its own kind.
  const Field whole = QueryColumn("V", DataType::kInteger);
  EXPECT_EQ(
      ValueTexts(whole, {"n/a & more", Variant::LongLong(-9223372036854775807LL), 2.5, Variant::Null()}),
      "n/a &#x26; more|-9223372036854775807|2.5|(none)");
  EXPECT_EQ(ValueText(QueryColumn("V", DataType::kVarChar),
                      Variant::FromDecimal({"0.0000000000000000000000000001", 28})),
            "0.0000000000000000000000000001");
  EXPECT_THROW(ValueText(whole, Variant::Object(std::make_shared<int>(1))), ent::Error);
}
