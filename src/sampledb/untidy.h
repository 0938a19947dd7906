// The untidy shop: the sample shop's data roughened the way years of real use leave it, so that the
// reports are tried on what shops really hold. Internal to sample_db.cpp.
#pragma once

#include "sampledb/sqlite_out.h"

namespace ent::sampledb {

// Changes the finished sample shop in db, always the same way for the same shop:
// - texts at their columns' full widths (names, descriptions, summaries, account names);
// - nulls in every column that allows them, spread over different rows;
// - a pricing band with a null sales class beside UNCLASSIFIED;
// - a part (RETURNED-IN-FULL) sold once and taken back in full a day later, 90% refunded;
// - invoices moved to the first and last day of their month, some late in the day.
// - (the generator already writes credit invoices, deleted invoices and lines without a class.)
// The books stay those of the tidy shop; the added invoice and credit have no postings.
void MakeUntidy(Database& db);

}  // namespace ent::sampledb
