// A home directory to put modules into. The catalogue is read once a thread, so every look at it
// is taken on a thread of its own.
#pragma once

#include <gtest/gtest.h>
#include <vorn/host.h>
#include <vorn/library.h>

#include <thread>
#include <vector>

#include "tests/scratch_home.h"
#include "tests/support/string_list.h"

class CatalogueTest : public testing::Test {
  protected:
    template <class Function>
    static void onNewThread(Function function) {
        std::thread(function).join();
    }

    void addModule(const std::string& name) { home_.write(name, ""); }

    static int32_t errorCode() { return VORN_ErrorPairCode(VORN_H_ImageGetError(nullptr)); }
    static int32_t errorSubcode() { return VORN_ErrorPairSubcode(VORN_H_ImageGetError(nullptr)); }

    ScratchHome home_;
};
