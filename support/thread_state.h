// The library state of the calling thread.
//
// Every thread that calls into the library has a LibraryState of its own, filled with initial
// values when the thread starts and released when it ends. It is the sum of one small record per
// room: a room declares a plain struct with default values and reaches it with
// threadState<ThatStruct>(). A record per room instead of one struct for all keeps the rooms'
// order: the state of a room above can't be named below.
#pragma once

namespace vorn {

template <class RoomState>
RoomState& threadState() {
    static thread_local RoomState state;
    return state;
}

}  // namespace vorn
