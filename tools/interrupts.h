// Ctrl-C (and a request to terminate, and a lost terminal) while a picture is on its way.
//
// While the object lives, the first such interrupt only asks: transfers see it in their abort
// callback and end in order. When that has not happened within a second, or a second one comes, a
// module doesn't answer: the module program that is being talked to is stopped. A third one ends
// this program at once; modules end with it, and a file that a saver hasn't finished leaves no
// trace.
#pragma once

#include <vorn/types.h>

#include <atomic>
#include <memory>
#include <mutex>

namespace vorn::tool {

class Interrupts {
  public:
    Interrupts();
    ~Interrupts();
    Interrupts(const Interrupts&) = delete;
    Interrupts& operator=(const Interrupts&) = delete;

    bool requested() const { return count_ > 0; }

    // While it lives, the module program of this image is the one that is stopped.
    class Watch {
      public:
        Watch(Interrupts& interrupts, VORN_Image* image);
        ~Watch();
        Watch(const Watch&) = delete;
        Watch& operator=(const Watch&) = delete;

      private:
        Interrupts& interrupts_;
    };

  private:
    struct Listener;

    void received();
    void waitedInVain();
    void stopWatched();
    void watch(VORN_Image* image);

    std::atomic<int> count_ = 0;
    std::mutex mutex_;
    VORN_Image* watched_ = nullptr;
    std::unique_ptr<Listener> listener_;
};

}  // namespace vorn::tool
