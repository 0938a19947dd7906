#include <iostream>
#include <string>

int main(int argc, char** argv) {
  if (argc < 2) {
    std::cerr << "usage: entprcreq <command> [options]\n";
    return 2;
  }
  std::cerr << "entprcreq: unknown command '" << argv[1] << "'\n";
  return 2;
}
