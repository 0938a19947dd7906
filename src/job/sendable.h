// Something that can be posted to the head office: a result document, or no document when the
// request failed. clsGenericReport is the one implementation.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "data/recordset.h"
#include "job/result_document.h"

namespace ent {

class SoapCall;

class ISendable {
 public:
  virtual ~ISendable() = default;

  virtual const std::shared_ptr<ResultDocument>& XMLDocument() const = 0;
  virtual void SetXMLDocument(std::shared_ptr<ResultDocument> document) = 0;
  virtual const std::shared_ptr<Recordset>& rs() const = 0;
  virtual void SetRs(std::shared_ptr<Recordset> rowset) = 0;
  virtual int16_t SERVICENAME() const = 0;
  virtual std::string WSDL() const = 0;
  virtual bool OnFail() = 0;
  virtual bool OnSucceed() = 0;
  virtual bool OnStart() = 0;
  // Calls sendReport with the six texts and returns the service's answer. Failures go to the caller.
  virtual std::string Post(SoapCall& client, const std::string& GUID, const std::string& Passcode,
                           const std::string& SessionID, const std::string& ClientID,
                           const std::string& strErr) = 0;
  virtual std::string sql() const = 0;
  virtual int32_t Count() const = 0;
  virtual void SetConnections() = 0;
  // The class name, as the log's "Starting: " line shows it.
  virtual std::string TypeName() const = 0;
};

class clsGenericReport : public ISendable {
 public:
  const std::shared_ptr<ResultDocument>& XMLDocument() const override { return document_; }
  void SetXMLDocument(std::shared_ptr<ResultDocument> document) override { document_ = std::move(document); }
  const std::shared_ptr<Recordset>& rs() const override { return rowset_; }
  void SetRs(std::shared_ptr<Recordset> rowset) override { rowset_ = std::move(rowset); }
  int16_t SERVICENAME() const override { return -1; }
  std::string WSDL() const override { return "/EntHost/service.asmx?WSDL"; }
  bool OnFail() override { return false; }
  bool OnSucceed() override { return false; }
  bool OnStart() override { return false; }
  std::string Post(SoapCall& client, const std::string& GUID, const std::string& Passcode,
                   const std::string& SessionID, const std::string& ClientID,
                   const std::string& strErr) override;
  std::string sql() const override { return ""; }
  int32_t Count() const override { return -1; }
  void SetConnections() override {}
  std::string TypeName() const override { return "clsGenericReport"; }

 private:
  std::shared_ptr<ResultDocument> document_;
  std::shared_ptr<Recordset> rowset_;
};

}  // namespace ent
