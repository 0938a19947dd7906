// The sub-commands of entprcreq. Each takes the arguments after its own name and returns the
// process exit code.
#pragma once

#include <string>
#include <vector>

namespace ent {
struct ResultView;
}

namespace ent::cli {

using Args = std::vector<std::string>;

int RunProcess(const Args& args);     // one request, as the host's call
int RunQuery(const Args& args);       // preview the document of a free SQL text
int RunSampleDb(const Args& args);    // create the embedded sample shop
int RunHeadOffice(const Args& args);  // stand-in head-office SOAP service
int RunToken(const Args& args);       // the administrator's side of the database-in-use token
int RunServe(const Args& args);       // take the host's requests over HTTP
int RunJournal(const Args& args);     // list the execution journal
int RunRender(const Args& args);      // show a result document as a table or a web page
int RunReports(const Args& args);     // the report catalogue: codes, parameters, result columns

// The view in one of render's formats ("text", "html", "csv"); raises std::invalid_argument for
// another format.
std::string RenderAs(const ResultView& view, const std::string& format, const std::string& title);

}  // namespace ent::cli
