// A module may change its message while the host reads it: a second thread of it does.
#include <gtest/gtest.h>
