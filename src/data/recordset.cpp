#include "data/recordset.h"

#include <algorithm>
#include <cctype>
#include <ostream>
#include <sstream>

#include "common/error.h"
#include "common/text.h"
#include "data/row_filter.h"
#include "data/rowset_xml.h"

namespace ent {

namespace {

size_t Utf8Length(const std::string& s) {
  return static_cast<size_t>(std::count_if(
      s.begin(), s.end(), [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; }));
}

// A widening text column grows to hold a text value.
void WidenFor(Field& field, const Variant& value) {
  if (!field.widens || !value.IsString() || !IsTextType(field.type)) return;
  const auto length = static_cast<int64_t>(Utf8Length(value.text()));
  if (length > field.defined_size) field.defined_size = length;
}

[[noreturn]] void MultipleStep() {
  throw Error(err::kMultipleStep, "Multiple-step operation generated errors. Check each status value.");
}

}  // namespace

Recordset::Recordset() = default;
Recordset::~Recordset() = default;

std::unique_ptr<Recordset> Recordset::OpenQuery(std::shared_ptr<Connection> connection,
                                                const std::string& sql, bool editable) {
  if (!connection || !connection->IsOpen())
    throw Error(err::kObjectClosed, "Operation is not allowed when the object is closed.");
  QueryResult result = connection->Query(sql);
  auto rs = std::make_unique<Recordset>();
  rs->fields_ = std::move(result.fields);
  rs->rows_.reserve(result.rows.size());
  for (auto& values : result.rows) rs->rows_.push_back(Row{std::move(values), false});
  rs->from_query_ = true;
  rs->editable_ = editable;
  if (editable) {
    // New rows go to the one table the columns come from.
    for (const Field& f : rs->fields_) {
      if (f.base_table.empty()) continue;
      if (rs->base_table_.empty()) rs->base_table_ = f.base_table;
    }
  }
  rs->connection_ = std::move(connection);
  rs->open_ = true;
  rs->RebuildVisible();
  return rs;
}

std::unique_ptr<Recordset> Recordset::OpenForwardOnly(std::shared_ptr<Connection> connection,
                                                      const std::string& sql) {
  if (!connection || !connection->IsOpen())
    throw Error(err::kObjectClosed, "Operation is not allowed when the object is closed.");
  std::unique_ptr<RowCursor> cursor = connection->OpenCursor(sql, {});
  return OpenForwardOnly(std::move(connection), std::move(cursor));
}

std::unique_ptr<Recordset> Recordset::OpenForwardOnly(std::shared_ptr<Connection> connection,
                                                      std::unique_ptr<RowCursor> cursor) {
  auto rs = std::make_unique<Recordset>();
  rs->cursor_ = std::move(cursor);
  rs->fields_ = rs->cursor_->fields();
  // One row slot, refilled by MoveNext; visible while it holds a row.
  rs->rows_.resize(1);
  if (rs->cursor_->Next(rs->rows_[0].values)) {
    rs->visible_.push_back(0);
    rs->Widen(rs->rows_[0].values);
  }
  rs->from_query_ = true;
  rs->connection_ = std::move(connection);
  rs->open_ = true;
  return rs;
}

void Recordset::AppendField(Field field) {
  if (open_) throw Error(err::kOperationNotAllowed, "Operation is not allowed in this context.");
  field.appended = true;
  fields_.push_back(std::move(field));
}

void Recordset::Open() {
  if (open_) throw Error(err::kOperationNotAllowed, "Operation is not allowed when the object is open.");
  open_ = true;
  editable_ = true;
  RebuildVisible();
}

void Recordset::Close() {
  open_ = false;
  cursor_.reset();
  rows_.clear();
  visible_.clear();
  connection_.reset();
}

void Recordset::CheckOpen() const {
  if (!open_) throw Error(err::kObjectClosed, "Operation is not allowed when the object is closed.");
}

size_t Recordset::FieldIndex(std::string_view name) const {
  return FieldIndexOf(fields_, name);
}

bool Recordset::IsBof() const {
  CheckOpen();
  return visible_.empty() || before_first_;
}

bool Recordset::IsEof() const {
  CheckOpen();
  return visible_.empty() || position_ >= visible_.size();
}

void Recordset::MoveFirst() {
  CheckOpen();
  FinishEdit();
  if (cursor_ && position_ > 0)
    throw Error(err::kOperationNotAllowed, "Rowset does not support fetching backward.");
  position_ = 0;
  before_first_ = false;
}

void Recordset::MoveNext() {
  CheckOpen();
  FinishEdit();
  if (IsEof())
    throw Error(err::kBofOrEof,
                "Either BOF or EOF is True, or the current record has been deleted. Requested operation "
                "requires a current record.");
  if (before_first_) {
    before_first_ = false;
    position_ = 0;
    return;
  }
  if (cursor_) {
    if (cursor_->Next(rows_[0].values))
      Widen(rows_[0].values);
    else
      position_ = 1;
    return;
  }
  ++position_;
}

void Recordset::MovePrevious() {
  CheckOpen();
  FinishEdit();
  if (cursor_) throw Error(err::kOperationNotAllowed, "Rowset does not support fetching backward.");
  if (IsBof())
    throw Error(err::kBofOrEof,
                "Either BOF or EOF is True, or the current record has been deleted. Requested operation "
                "requires a current record.");
  if (position_ == 0) {
    before_first_ = true;
    return;
  }
  --position_;
}

void Recordset::MoveLast() {
  CheckOpen();
  FinishEdit();
  if (cursor_) throw Error(err::kOperationNotAllowed, "Rowset does not support fetching backward.");
  before_first_ = false;
  position_ = visible_.empty() ? 0 : visible_.size() - 1;
}

size_t Recordset::RecordCount() const {
  CheckOpen();
  return visible_.size();
}

const Recordset::Row& Recordset::CurrentRow() const {
  if (IsBof() || IsEof())
    throw Error(err::kBofOrEof,
                "Either BOF or EOF is True, or the current record has been deleted. Requested operation "
                "requires a current record.");
  return rows_[visible_[position_]];
}

Recordset::Row& Recordset::CurrentRow() {
  return const_cast<Row&>(static_cast<const Recordset&>(*this).CurrentRow());
}

const Variant& Recordset::Get(std::string_view name) const {
  return Get(FieldIndex(name));
}

const Variant& Recordset::Get(size_t index) const {
  const Row& row = CurrentRow();
  if (index >= fields_.size())
    throw Error(err::kItemNotFound,
                "Item cannot be found in the collection corresponding to the requested name or ordinal.");
  return row.values[index];
}

void Recordset::Set(std::string_view name, const Variant& value) {
  Set(FieldIndex(name), value);
}

void Recordset::Set(size_t index, const Variant& value) {
  if (index >= fields_.size())
    throw Error(err::kItemNotFound,
                "Item cannot be found in the collection corresponding to the requested name or ordinal.");
  Row& row = CurrentRow();
  if (!editable_)
    throw Error(err::kNotUpdatable,
                "Current Recordset does not support updating. This may be a limitation of the provider, or "
                "of the selected locktype.");
  Field& field = fields_[index];
  WidenFor(field, value);
  row.values[index] = Coerce(field, value);
}

void Recordset::Set(size_t index, Variant&& value) {
  // Text into a text column is checked as Coerce checks it and then moved in, saving a copy of
  // every cell a report copies. Text holding much more room than it uses is copied instead, so that
  // a rowset keeps no slack.
  if (index < fields_.size() && value.IsString() && IsTextType(fields_[index].type) && editable_ &&
      !IsBof() && !IsEof() && value.text().capacity() - value.text().size() < 16) {
    Field& field = fields_[index];
    const auto length = static_cast<int64_t>(Utf8Length(value.text()));
    if (field.widens && length > field.defined_size) field.defined_size = length;
    if (field.defined_size > 0 && length > field.defined_size) MultipleStep();
    CurrentRow().values[index] = std::move(value);
    return;
  }
  Set(index, static_cast<const Variant&>(value));
}

Variant Recordset::Coerce(const Field& field, const Variant& value) const {
  if (value.IsNull()) {
    if (!field.may_be_null && !field.appended) MultipleStep();
    return value;
  }
  if (value.IsEmpty()) return Variant::Null();
  try {
    switch (field.type) {
      case DataType::kChar:
      case DataType::kVarChar:
      case DataType::kWChar:
      case DataType::kVarWChar:
      case DataType::kLongVarChar:
      case DataType::kLongVarWChar: {
        std::string text = value.ToText();
        if (field.defined_size > 0 && Utf8Length(text) > static_cast<size_t>(field.defined_size))
          MultipleStep();
        return Variant(std::move(text));
      }
      case DataType::kTinyInt:
        return Variant::Byte(static_cast<uint8_t>(value.ToLong()));
      case DataType::kSmallInt:
        return Variant::Integer(static_cast<int16_t>(value.ToLong()));
      case DataType::kInteger:
        return Variant::Long(value.ToLong());
      case DataType::kBigInt:
        return Variant::LongLong(static_cast<int64_t>(value.ToDouble()));
      case DataType::kBoolean:
        return Variant(value.ToBool());
      case DataType::kCurrency:
        return Variant(value.ToCurrency());
      case DataType::kDouble:
        return Variant(value.ToDouble());
      case DataType::kSingle:
        return Variant::Single(static_cast<float>(value.ToDouble()));
      case DataType::kNumeric:
        return Variant(value.ToDouble());
      case DataType::kDateTime:
        return Variant(value.ToDate());
      case DataType::kGuid:
        return Variant(value.ToText());
    }
  } catch (const Error&) {
    MultipleStep();
  }
  return value;
}

void Recordset::AddNew() {
  CheckOpen();
  if (!editable_)
    throw Error(err::kNotUpdatable,
                "Current Recordset does not support updating. This may be a limitation of the provider, or "
                "of the selected locktype.");
  FinishEdit();
  Row row;
  row.values.assign(fields_.size(), Variant::Null());
  row.pending_insert = true;
  rows_.push_back(std::move(row));
  // A new row stays visible whatever the filter says, so that the row just added can be read back until the
  // rowset is requeried.
  visible_.push_back(rows_.size() - 1);
  position_ = visible_.size() - 1;
  before_first_ = false;
  editing_new_ = true;
}

void Recordset::Update() {
  CheckOpen();
  FinishEdit();
}

void Recordset::FinishEdit() {
  if (!editing_new_) return;
  editing_new_ = false;
  if (!from_query_ || !connection_) return;  // free-standing or detached: stays a pending insert
  Row& row = rows_.back();
  std::vector<std::string> columns;
  std::vector<Variant> values;
  for (size_t i = 0; i < fields_.size(); ++i) {
    if (row.values[i].IsNull() || fields_[i].base_column.empty()) continue;
    columns.push_back(fields_[i].base_column);
    values.push_back(row.values[i]);
  }
  if (base_table_.empty())
    throw Error(err::kNotUpdatable, "Insufficient base table information for updating or refreshing.");
  connection_->InsertRow(base_table_, columns, values);
  row.pending_insert = false;
}

void Recordset::SetFilter(std::string_view criteria) {
  CheckOpen();
  if (cursor_) throw Error(err::kOperationNotAllowed, "Operation is not allowed in this context.");
  FinishEdit();
  if (criteria.empty()) {
    filter_.reset();
    filter_text_.clear();
  } else {
    filter_ = RowFilter::Parse(criteria, fields_);
    filter_text_ = std::string(criteria);
  }
  RebuildVisible();
}

void Recordset::RebuildVisible() {
  visible_.clear();
  for (size_t i = 0; i < rows_.size(); ++i)
    if (!filter_ || filter_->Matches(rows_[i].values)) visible_.push_back(i);
  position_ = 0;
  before_first_ = false;
}

void Recordset::Widen(const std::vector<Variant>& values) {
  const size_t n = std::min(fields_.size(), values.size());
  for (size_t i = 0; i < n; ++i) WidenFor(fields_[i], values[i]);
}

uint64_t Recordset::Write(std::ostream& out, bool flatten, std::ostream* head_after) {
  CheckOpen();
  RowsetXmlWriter writer(out, fields_, head_after == nullptr);
  if (cursor_) {
    if (!IsEof()) {
      writer.Row(rows_[0].values);
      while (cursor_->Next(rows_[0].values)) {
        Widen(rows_[0].values);
        writer.Row(rows_[0].values);
      }
    }
    position_ = 1;
  } else {
    const bool move_added = flatten && !visible_.empty() && rows_[visible_.front()].pending_insert;
    for (size_t i : visible_)
      if (!move_added || !rows_[i].pending_insert) writer.Row(rows_[i].values, rows_[i].pending_insert);
    if (move_added)
      for (size_t i : visible_)
        if (rows_[i].pending_insert) writer.Row(rows_[i].values);
  }
  writer.Finish();
  if (head_after) WriteRowsetHead(*head_after, fields_);
  return writer.rows();
}

uint64_t Recordset::Save(std::ostream& out) {
  return Write(out, false, nullptr);
}

uint64_t Recordset::SaveFlattened(std::ostream& out) {
  return Write(out, true, nullptr);
}

uint64_t Recordset::SaveRowsThenHead(std::ostream& body, std::ostream& head) {
  return Write(body, true, &head);
}

std::string Recordset::SaveToString() {
  std::ostringstream out;
  Save(out);
  return out.str();
}

}  // namespace ent
