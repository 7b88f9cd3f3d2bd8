#include "CliExport.h"

#include <cstdio>

#include "CliJob.h"
#include "Library.h"
#include "LogbookExport.h"

int RunExport(const CliExportRequest &request) {
  const Library library;
  if (!library.notice().isEmpty()) {
    std::fprintf(stderr, "mrvtq5dk-cli: %s\n", qPrintable(library.notice()));
  }
  const LogbookExportResult result =
      ExportLogbook(library, {request.file, request.output, request.since, request.serial, {}});
  if (result.ok()) {
    std::printf("%s\n", qPrintable(result.sentence));
    return kCliOk;
  }
  std::fprintf(stderr, "mrvtq5dk-cli: %s\n", qPrintable(result.sentence));
  return result.failure == ExportFailure::UnknownDevice ? kCliUsage : kCliCannotWrite;
}
