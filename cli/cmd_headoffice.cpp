#include <signal.h>

#include <iostream>

#include "commands.h"
#include "common/error.h"
#include "options.h"
#include "server/head_office.h"

namespace ent::cli {

namespace {

const char kHelp[] =
    "usage: entprcreq headoffice --listen HOST:PORT [--out DIR] [options]\n"
    "\n"
    "A stand-in for the head office's web service, for trying the server without one. It publishes\n"
    "its service description at http://HOST:PORT/EntHost/service.asmx?WSDL, accepts sendReport and\n"
    "answers \"True\". Each post is stored in DIR as NNNN.json (its six arguments in order) with the\n"
    "result document in NNNN.xml, and listed in DIR/posts.txt (number, session, client, status,\n"
    "rows). It runs until interrupted (Ctrl-C or SIGTERM).\n"
    "\n"
    "  --listen HOST:PORT   where to listen; port 0 picks a free port (printed on start)\n"
    "  --out DIR            where to store the posts (created if missing; default: not stored)\n"
    "  --answer TEXT        answer every post with TEXT instead of \"True\"\n"
    "  --fault TEXT         answer every post with a SOAP fault carrying TEXT\n"
    "  --namespace URI      the service's target namespace (default http://tempuri.org/)\n"
    "  --service-path PATH  where the service description tells clients to post\n"
    "                       (default /EntHost/service.asmx)\n"
    "  --delay-ms N         wait N milliseconds before answering each post\n";

}  // namespace

int RunHeadOffice(const Args& args) {
  HeadOfficeOptions settings;
  std::string host;
  int port = 0;
  try {
    Options options(
        args, {"--listen", "--out", "--answer", "--fault", "--namespace", "--service-path", "--delay-ms"},
        {"--help"});
    if (options.Has("--help")) {
      std::cout << kHelp;
      return 0;
    }
    const std::string listen = options.Get("--listen");
    const size_t colon = listen.rfind(':');
    if (colon == std::string::npos || !options.positional().empty()) {
      std::cerr << kHelp;
      return 2;
    }
    host = listen.substr(0, colon);
    size_t used = 0;
    port = std::stoi(listen.substr(colon + 1), &used);
    if (used != listen.size() - colon - 1 || port < 0 || port > 65535)
      throw std::invalid_argument("--listen takes HOST:PORT with a port from 0 to 65535");
    settings.out_dir = options.Get("--out");
    settings.answer = options.Get("--answer", settings.answer);
    settings.fault = options.Get("--fault");
    settings.target_namespace = options.Get("--namespace", settings.target_namespace);
    settings.service_path = options.Get("--service-path", settings.service_path);
    settings.delay_ms = std::stoi(options.Get("--delay-ms", "0"));
  } catch (const std::exception& e) {
    std::cerr << "entprcreq headoffice: " << e.what() << "\n";
    return 2;
  }

  // Signals are taken by sigwait below, not by whichever thread happens to run.
  sigset_t stop_signals;
  sigemptyset(&stop_signals);
  sigaddset(&stop_signals, SIGINT);
  sigaddset(&stop_signals, SIGTERM);
  pthread_sigmask(SIG_BLOCK, &stop_signals, nullptr);
  try {
    HeadOffice office(settings);
    port = office.Start(host, port);
    std::cout << "listening on http://" << host << ":" << port << "/EntHost/service.asmx" << std::endl;
    int signal_number = 0;
    sigwait(&stop_signals, &signal_number);
    office.Stop();
  } catch (const Error& e) {
    std::cerr << "entprcreq headoffice: " << e.description() << "\n";
    return 1;
  }
  return 0;
}

}  // namespace ent::cli
