#pragma once

#include "host/hostservices.h"
#include "plugin/fields/formathost.h"

namespace corvane {

// The number-format host calls answered by the host port: real-to-text and value formatting
// by the host, the short system variables of the working drawing.
class PortFormatHost : public FormatHost {
 public:
  explicit PortFormatHost(host::AcDbHostApplicationServices& services) : services_(services) {}

  bool realToString(double value, int units, int precision, std::wstring& text) override;
  bool getShortVar(std::wstring_view name, int& value) override;
  bool setShortVar(std::wstring_view name, int value) override;
  std::wstring formatValue(const host::AcValue& value, const std::wstring& format) override;
  int hostVersion() override { return services_.versionMajor(); }

 private:
  host::AcDbHostApplicationServices& services_;
};

}  // namespace corvane
