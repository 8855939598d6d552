// What a conversation may leave behind, and must not: processes, descriptors, shared objects.
#pragma once

#include <gtest/gtest.h>

#include <set>
#include <string>

// Waits for the end of a program that is watched by a descriptor, and closes it.
void awaitEnd(int watch);

// A descriptor that watches a program, whoever started it.
int watchProgram(int id);

// Whether this program has any child, living or dead.
bool hasChildren();

// Waits until no program that lies in the directory runs.
void awaitProgramsIn(const std::string& directory);

// Compares the end of a test with its beginning.
class NothingStays : public testing::Test {
  protected:
    void SetUp() override;
    void TearDown() override;

  private:
    std::set<std::string> descriptors_;
};
