#include <iostream>

#include "commands.h"
#include "common/error.h"
#include "options.h"
#include "server/head_office.h"
#include "serving.h"

namespace ent::cli {

namespace {

const char kHelp[] =
    "usage: entprcreq headoffice --listen HOST:PORT [--out DIR] [options]\n"
    "\n"
    "A stand-in for the head office's web service, for trying the server without one. It publishes\n"
    "its service description at http://HOST:PORT/EntHost/service.asmx?WSDL, accepts sendReport and\n"
    "answers \"True\". Each post is stored in DIR as NNNN.json (its six arguments in order) with the\n"
    "result document in NNNN.xml, and listed in DIR/posts.txt (number, session, client, status,\n"
    "rows). With --out, http://HOST:PORT/ is a web page listing the stored posts (time, session,\n"
    "status, rows) with each document shown as the head office's client shows it. It runs until\n"
    "interrupted (Ctrl-C or SIGTERM).\n"
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
        {"--help"}, kHelp);
    if (options.Has("--help")) {
      std::cout << kHelp;
      return 0;
    }
    options.Require("--listen");
    options.RejectPositional();
    ParseListen(options.Get("--listen"), host, port);
    settings.out_dir = options.Get("--out");
    settings.answer = options.Get("--answer", settings.answer);
    settings.fault = options.Get("--fault");
    settings.target_namespace = options.Get("--namespace", settings.target_namespace);
    settings.service_path = options.Get("--service-path", settings.service_path);
    settings.delay_ms = static_cast<int>(options.GetNumber("--delay-ms", 0, 0));
  } catch (const std::exception& e) {
    std::cerr << "entprcreq headoffice: " << e.what() << "\n";
    return 2;
  }

  BlockStopSignals();
  try {
    HeadOffice office(settings);
    port = office.Start(host, port);
    std::cout << "listening on http://" << host << ":" << port << "/EntHost/service.asmx" << std::endl;
    if (!settings.out_dir.empty())
      std::cout << "posts shown at http://" << host << ":" << port << "/" << std::endl;
    WaitForStopSignal();
    office.Stop();
  } catch (const Error& e) {
    std::cerr << "entprcreq headoffice: " << e.description() << "\n";
    return 1;
  }
  return 0;
}

}  // namespace ent::cli
