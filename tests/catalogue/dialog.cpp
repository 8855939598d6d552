// A dialog library that shows nothing and notes how it was called.
#include "tests/catalogue/dialog.h"

namespace {

struct Shown {
    DialogRecord* record = nullptr;
    ~Shown() {
        if (record != nullptr) ++record->unloads;
    }
} shown;

[[maybe_unused]] DialogRecord& show(VORN_Word parentWindow) {
    shown.record = reinterpret_cast<DialogRecord*>(parentWindow);
    return *shown.record;
}

}  // namespace

#ifdef HAS_NEW_ENTRY
extern "C" VORN_API VORN_ErrorPair NewDoInterface(VORN_Word parentWindow, const VORN_Word* tags) {
    DialogRecord& record = show(parentWindow);
    ++record.newCalls;
    record.tags = tags;
    return record.answer;
}
#endif

#ifdef HAS_OLD_ENTRY
extern "C" VORN_API void DoInterface(VORN_Word parentWindow, VORN_Word second) {
    DialogRecord& record = show(parentWindow);
    ++record.oldCalls;
    record.second = second;
}
#endif
