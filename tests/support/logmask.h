// A log without what differs from run to run.
#ifndef KIVOM_TESTS_SUPPORT_LOGMASK_H
#define KIVOM_TESTS_SUPPORT_LOGMASK_H

#include <regex>
#include <string>

// Banner, dates and times masked; the banner has a test of its own.
inline std::string MaskLog(std::string log) {
    static const std::regex kDate("(Job (started|finished) at )[^\n]*");
    static const std::regex kTime("Elapsed Time: [0-9]+\\.[0-9]{6} sec\\.");
    const std::string title = "(Version: 07/04/2019)     \n\n";
    const std::size_t end = log.find(title);
    if (end != std::string::npos) {
        log = "<banner>\n" + log.substr(end + title.size());
    }
    return std::regex_replace(std::regex_replace(log, kDate, "$1<date>"), kTime, "Elapsed Time: <t> sec.");
}

#endif
