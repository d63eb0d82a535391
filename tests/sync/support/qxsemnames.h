// Names for named semaphores in tests. Every name handed out is remembered
// and unlinked again when the test ends, at exit, and from a handler of the
// fatal signals, so that a failing or crashing test leaves nothing behind in
// /dev/shm.
#ifndef QXBASE_TESTS_SYNC_QXSEMNAMES_H
#define QXBASE_TESTS_SYNC_QXSEMNAMES_H

#include <string>

// A fresh name, "/qxtest-<pid>-<n>".
std::string qxTestSemaphoreName();
// Whether the name is present in /dev/shm.
bool qxTestSemaphoreExists(const std::string& in_strName);
// Names handed out that are still present; unlinks them all.
int qxTestUnlinkSemaphores();

#endif  // QXBASE_TESTS_SYNC_QXSEMNAMES_H
