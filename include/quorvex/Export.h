/// What is visible outside libQuorvexU: all else is hidden.
#pragma once

#define QUORVEX_API __attribute__((visibility("default")))
