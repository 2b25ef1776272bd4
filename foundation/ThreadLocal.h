#pragma once
// One object of a class per thread, made when first asked for. While the thread ends its objects
// go in an order of the runtime's choosing; an object asked for after its own has gone answers
// null, and the caller does without it.

namespace vantrelia {

template <class T>
class ThreadLocal {
 public:
  static T* get() {
    if (gone) return nullptr;
    thread_local Holder holder;
    return &holder.object;
  }

 private:
  struct Holder {
    ~Holder() { gone = true; }
    T object;
  };
  // Trivially destroyed, so it still answers while the thread's other objects go.
  static inline thread_local bool gone = false;
};

}  // namespace vantrelia
