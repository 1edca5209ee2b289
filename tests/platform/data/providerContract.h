// What every provider must do, as one suite. A provider's tests name a harness and instantiate ProviderContract with
// it:
//   INSTANTIATE_TEST_SUITE_P(Embedded, ProviderContract, ::testing::Values(&makeEmbeddedHarness));
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "platform/data/dataAccess.h"
#include "platform/data/recordset.h"

namespace qrel {

// A server with one database that holds what contractScript makes.
class ProviderHarness {
 public:
  virtual ~ProviderHarness() = default;
  virtual DataAccess& dataAccess() = 0;
  // The connection string for a database of the server; an empty name gives the one that is filled.
  virtual std::string connectionString(const std::string& database) = 0;
};

// T-SQL with tables Kinds (a column of each type; a full row, a row of Nulls) and Numbers (N from 1 to 12).
extern const char* const contractScript;

class ProviderContract : public ::testing::TestWithParam<std::unique_ptr<ProviderHarness> (*)()> {
 protected:
  void SetUp() override { harness_ = GetParam()(); }

  std::shared_ptr<Connection> connect(const std::string& database = {});
  Recordset open(const std::string& sql, int location = adUseClient, std::size_t cacheSize = 1);
  // The error's number of opening a query; 0 without one. SQL errors must carry the SQL.
  std::int32_t queryError(const std::string& sql, int timeoutSeconds = 30);

  std::unique_ptr<ProviderHarness> harness_;
};

}  // namespace qrel
