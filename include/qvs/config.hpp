/* SPDX-License-Identifier: Apache-2.0 */
/* <qvs/config.h> for C++17: texts and reports release themselves, and a failure is an exception. */
#ifndef QVS_CONFIG_HPP
#define QVS_CONFIG_HPP

#include <qvs/config.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace qvs {
namespace config {

/* The entries of a report. Their texts live as long as the report. */
class Report {
  public:
    explicit Report(QVSConfig_Report *report = nullptr) : report_(report, QVSConfig_FreeReport) {}

    uint32_t size() const { return QVSConfig_CountEntries(report_.get()); }
    bool empty() const { return size() == 0; }
    QVSConfig_Entry operator[](uint32_t index) const {
        QVSConfig_Entry entry{};
        if (QVSConfig_GetEntry(report_.get(), index, &entry) != HYP_OK)
            throw std::out_of_range("qvs::config::Report");
        return entry;
    }

  private:
    std::shared_ptr<QVSConfig_Report> report_;
};

/* What a function throws that does not return HYP_OK. what() is the first error of the report, or the text of
 * the status. */
class Error : public std::runtime_error {
  public:
    Error(HYP_ReturnStatus status, Report report)
        : std::runtime_error(textOf(status, report)), status_(status), report_(std::move(report)) {}

    HYP_ReturnStatus status() const { return status_; }
    const Report &report() const { return report_; }

  private:
    static std::string textOf(HYP_ReturnStatus status, const Report &report) {
        for (uint32_t i = 0; i < report.size(); i++) {
            const QVSConfig_Entry entry = report[i];
            if (entry.kind != QVSCONFIG_ERROR) continue;
            return *entry.path == '\0' ? entry.text : std::string(entry.path) + ": " + entry.text;
        }
        return ReturnStatusToString(status);
    }

    HYP_ReturnStatus status_;
    Report report_;
};

namespace detail {
template <typename Call>
Report required(Call call) {
    QVSConfig_Report *raw = nullptr;
    const HYP_ReturnStatus status = call(&raw);
    Report report(raw);
    if (status != HYP_OK) throw Error(status, std::move(report));
    return report;
}
}  // namespace detail

/* The functions of <qvs/config.h>. An empty list of aliases stands for all switches. */
inline std::string exportText(const std::vector<std::string> &aliases = {}, uint32_t flags = 0) {
    std::vector<const char *> names;
    for (const std::string &alias : aliases)
        names.push_back(alias.c_str());
    char *raw = nullptr;
    detail::required([&](QVSConfig_Report **report) {
        return QVSConfig_Export(names.data(), static_cast<uint32_t>(names.size()), flags, &raw, report);
    });
    const std::unique_ptr<char, void (*)(char *)> text(raw, QVSConfig_FreeText);
    return text.get();
}
inline Report validate(std::string_view text) {
    return detail::required(
        [&](QVSConfig_Report **report) { return QVSConfig_Validate(text.data(), text.size(), report); });
}
inline Report compare(std::string_view text, uint32_t flags = 0) {
    return detail::required([&](QVSConfig_Report **report) {
        return QVSConfig_Compare(text.data(), text.size(), flags, report);
    });
}
inline Report apply(std::string_view text, uint32_t flags = 0, uint32_t confirmSeconds = 0) {
    return detail::required([&](QVSConfig_Report **report) {
        return QVSConfig_Apply(text.data(), text.size(), flags, confirmSeconds, report);
    });
}
inline void confirm() {
    detail::required([](QVSConfig_Report **) { return QVSConfig_Confirm(); });
}
inline Report recover() {
    return detail::required([](QVSConfig_Report **report) { return QVSConfig_Recover(report); });
}

}  // namespace config
}  // namespace qvs

#endif
