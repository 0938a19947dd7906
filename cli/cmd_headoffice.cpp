#include <iostream>

#include "commands.h"

namespace ent::cli {

int RunHeadOffice(const Args&) {
  std::cerr << "entprcreq: this command is not built yet\n";
  return 2;
}

}  // namespace ent::cli
