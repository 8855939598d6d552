// Ctrl-C (and a request to terminate, and a lost terminal) while a picture is on its way.
//
// While the object lives, the first such interrupt only asks: transfers see it in their abort
// callback and end in order. When that has not happened within a second, or a second one comes, a
// module doesn't answer: the module programs that are being talked to are stopped. A third one ends
// this program at once; modules end with it, and a file that a saver hasn't finished leaves no
// trace.
#pragma once

#include <vorn/types.h>

#include <atomic>
#include <memory>
#include <mutex>
#include <vector>

namespace vorn::tool {

class Interrupts {
  public:
    Interrupts();
    ~Interrupts();
    Interrupts(const Interrupts&) = delete;
    Interrupts& operator=(const Interrupts&) = delete;

    bool requested() const { return count_ > 0; }

    // An abort callback (ITAG_AbortCallback) and its user data.
    static int32_t onAbort(VORN_Image*, VORN_Word userData) {
        return reinterpret_cast<const Interrupts*>(userData)->requested();
    }
    VORN_Word userData() const { return reinterpret_cast<VORN_Word>(this); }

    // While it lives, the module program of this image is among those that are stopped.
    class Watch {
      public:
        Watch(Interrupts& interrupts, VORN_Image* image);
        ~Watch();
        Watch(const Watch&) = delete;
        Watch& operator=(const Watch&) = delete;

      private:
        Interrupts& interrupts_;
        VORN_Image* image_;
    };

  private:
    struct Listener;

    void received();
    void waitedInVain();
    void stopWatched();

    std::atomic<int> count_ = 0;
    std::mutex mutex_;
    std::vector<VORN_Image*> watched_;
    std::unique_ptr<Listener> listener_;
};

}  // namespace vorn::tool
