// The table of findings (kinds.cpp).
#ifndef KIVOM_ACCOUNT_KINDS_H
#define KIVOM_ACCOUNT_KINDS_H

#include "account/findings.h"

namespace account {

extern const FindingKind kKinds[kCodes];

} // namespace account

#endif
