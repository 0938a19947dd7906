// The program that runs the HTTP servers, started by `entprcreq serve` and `entprcreq headoffice`
// in their place: only it loads the HTTP server library.
#include <algorithm>
#include <iostream>
#include <string>

#include "commands.h"

int main(int argc, char** argv) {
  const std::string command = argc >= 2 ? argv[1] : "";
  const ent::cli::Args args(argv + std::min(argc, 2), argv + argc);
  if (command == "serve") return ent::cli::RunServe(args);
  if (command == "headoffice") return ent::cli::RunHeadOffice(args);
  std::cerr << "entprcreq-http runs 'entprcreq serve' and 'entprcreq headoffice'; start it through those.\n";
  return 2;
}
