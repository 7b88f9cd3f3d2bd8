// Validation against the published UDDF schema, in-process with libxml2. The document is
// read as a stream and checked as it goes, with no tree built; malformed XML is invalid, and
// libxml2 prints why on stderr.
#pragma once

#include <libxml/xmlschemas.h>

#include <QByteArray>
#include <cstdlib>

inline bool ValidUddf(const QByteArray &document) {
  static xmlSchemaValidCtxtPtr validator = [] {
    xmlSchemaParserCtxtPtr parser = xmlSchemaNewParserCtxt(UDDF_SCHEMA);
    xmlSchemaPtr schema = xmlSchemaParse(parser);
    xmlSchemaFreeParserCtxt(parser);
    if (!schema) std::abort();  // the schema itself did not load
    return xmlSchemaNewValidCtxt(schema);
  }();
  xmlParserInputBufferPtr input = xmlParserInputBufferCreateMem(
      document.constData(), int(document.size()), XML_CHAR_ENCODING_NONE);
  // The input is freed by the validation, whatever its outcome.
  return xmlSchemaValidateStream(validator, input, XML_CHAR_ENCODING_NONE, nullptr, nullptr) == 0;
}
