// Counting what a deck means and what the translator holds.
#ifndef KIVOM_ACCOUNT_SUMMARY_H
#define KIVOM_ACCOUNT_SUMMARY_H

#include "account/account.h"
#include "account/check.h"

namespace account {

Summary SumUpMeaning(const Account &account);

// After Reading::Resolve.
Summary SumUpReading(Account *account);

} // namespace account

#endif
