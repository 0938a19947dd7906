// A rowset in the shape the report code was written against (a client-side recordset). Two kinds:
//  - query rowsets (OpenQuery): every row fetched at once; editable ones insert new rows into their
//    base table on Update;
//  - forward-only query rowsets (OpenForwardOnly): rows read from the database one at a time as the
//    rowset moves on, gone once passed; not editable, no filter;
//  - free-standing rowsets: fields appended, opened without a source, rows added in memory. Rows added
//    and not sent to a database are pending inserts and are saved inside rs:insert.
// Navigation: IsBof/IsEof, MoveFirst/Next/Last, a Filter that hides rows.
// Column names are matched without regard to case. Failures raise Error.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "common/variant.h"
#include "data/connection.h"
#include "data/field.h"

namespace ent {

class RowFilter;

class Recordset {
 public:
  Recordset();
  ~Recordset();
  Recordset(const Recordset&) = delete;
  Recordset& operator=(const Recordset&) = delete;

  // A query rowset over `connection`. An editable one accepts AddNew/Update.
  static std::unique_ptr<Recordset> OpenQuery(std::shared_ptr<Connection> connection, const std::string& sql,
                                              bool editable);

  // A forward-only query rowset over `connection`, positioned on its first row.
  static std::unique_ptr<Recordset> OpenForwardOnly(std::shared_ptr<Connection> connection,
                                                    const std::string& sql);
  // A forward-only rowset over the rows `cursor` gives, which may come from `connection` (kept open
  // as long as the rowset is). Its text columns that widen learn their width from the rows as they
  // are read.
  static std::unique_ptr<Recordset> OpenForwardOnly(std::shared_ptr<Connection> connection,
                                                    std::unique_ptr<RowCursor> cursor);

  // Free-standing rowset: append fields, then Open.
  void AppendField(Field field);
  void Open();
  bool IsOpen() const { return open_; }
  void Close();

  const std::vector<Field>& fields() const { return fields_; }
  // Index of a column by name (without case); Error 3265 when there is none.
  size_t FieldIndex(std::string_view name) const;

  // Navigation over the visible rows (those the filter lets through).
  bool IsBof() const;
  bool IsEof() const;
  void MoveFirst();
  void MoveNext();
  void MovePrevious();
  void MoveLast();
  size_t RecordCount() const;

  // The current row's values; Error 3021 without a current row.
  const Variant& Get(std::string_view name) const;
  const Variant& Get(size_t index) const;
  void Set(std::string_view name, const Variant& value);
  void Set(size_t index, const Variant& value);
  void Set(size_t index, Variant&& value);  // as above; text is moved, not copied

  // Adds a row and makes it current; Update ends the edit (an editable query rowset inserts the row
  // into its base table then).
  void AddNew();
  void Update();

  // Shows only the rows the criteria let through ("vehid <> 12 and invoiceid <> '5'"); the empty text
  // shows every row again. Positions on the first visible row.
  void SetFilter(std::string_view criteria);
  const std::string& filter() const { return filter_text_; }

  // Drops the connection: the rows stay, nothing more is sent to the database. A forward-only rowset
  // keeps it: its rows are still to be read from it.
  void Detach() {
    if (!cursor_) connection_.reset();
  }
  bool IsDetached() const { return connection_ == nullptr; }

  // Writes the visible rows as persisted-rowset XML and returns how many. A forward-only rowset
  // writes its current row and every later one, and is at its end afterwards.
  uint64_t Save(std::ostream& out);
  std::string SaveToString();
  // As Save, but rows added in memory stand directly under rs:data, after the others, when the
  // first row is such a row (as the job's document has them); otherwise as Save.
  uint64_t SaveFlattened(std::ostream& out);
  // As SaveFlattened, with the rows and the document's end written to `body` first and the head
  // (the schema, with the widths the rows gave the widening text columns) to `head` after them: a
  // forward-only rowset knows those widths only once it has read its last row. The document is the
  // head followed by the body.
  uint64_t SaveRowsThenHead(std::ostream& body, std::ostream& head);

 private:
  struct Row {
    std::vector<Variant> values;
    bool pending_insert = false;
  };

  const Row& CurrentRow() const;
  Row& CurrentRow();
  void CheckOpen() const;
  void FinishEdit();
  Variant Coerce(const Field& field, const Variant& value) const;
  void RebuildVisible();
  uint64_t Write(std::ostream& out, bool flatten, std::ostream* head_after);
  void Widen(const std::vector<Variant>& values);

  std::vector<Field> fields_;
  std::vector<Row> rows_;
  std::vector<size_t> visible_;  // indexes into rows_, in order
  size_t position_ = 0;          // index into visible_; == size() is EOF
  bool before_first_ = false;    // BOF after MovePrevious from the first row
  bool open_ = false;
  bool from_query_ = false;
  bool editable_ = false;
  bool editing_new_ = false;
  std::string base_table_;
  std::shared_ptr<Connection> connection_;
  std::string filter_text_;
  std::unique_ptr<RowFilter> filter_;
  std::unique_ptr<RowCursor> cursor_;  // forward-only: the rows not read yet
};

}  // namespace ent
