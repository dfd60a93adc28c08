#pragma once

#include <cstddef>
#include <memory>
#include <utility>

namespace ns {

/// Memory for objects that are made by the thousand and mostly go together, as a document's items
/// do.  Making one costs a few instructions, and those that were made one after another lie side
/// by side.
///
/// Memory comes in blocks, each twice as large as the one before, up to 2 MB or one larger object.
/// One is given back when its objects and the weak pointers to them are gone, the last one not
/// before the arena.  So an object that outlives the others may keep 2 MB.
///
/// Objects may outlive the arena, and any thread may release them.  One thread at a time may make
/// some.
class Arena {
 public:
  Arena() = default;
  Arena(const Arena&) = delete;
  Arena& operator=(const Arena&) = delete;
  ~Arena();

  /// A new object, which may have an alignment of 16 at most.  Raises what its constructor raises,
  /// and std::bad_alloc.
  template <class T, class... Arguments>
  std::shared_ptr<T> make(Arguments&&... arguments) {
    // what is allocated holds the counts of the pointers, too
    constexpr size_t kMost = sizeof(T) + 64;
    return std::allocate_shared<T>(Allocator<T, kMost>(blockWith(kMost)),
                                   std::forward<Arguments>(arguments)...);
  }

 private:
  class Block;
  static void* allocate(Block& block, size_t size);
  static void release(Block& block, void* object, size_t size);

  /// Gives one object of at most `kMost` bytes its memory in a block that has room for it.
  template <class T, size_t kMost>
  struct Allocator {
    using value_type = T;
    template <class Other>
    struct rebind {
      using other = Allocator<Other, kMost>;
    };
    explicit Allocator(Block& of) : block(&of) {}
    template <class Other>
    Allocator(const Allocator<Other, kMost>& other) : block(other.block) {}
    T* allocate(size_t) {
      static_assert(sizeof(T) <= kMost && alignof(T) <= alignof(std::max_align_t));
      return static_cast<T*>(Arena::allocate(*block, sizeof(T)));
    }
    void deallocate(T* object, size_t) { release(*block, object, sizeof(T)); }
    template <class Other>
    bool operator==(const Allocator<Other, kMost>& other) const {
      return block == other.block;
    }
    Block* block;
  };

  Block& blockWith(size_t room);

  Block* current_ = nullptr;
};

}  // namespace ns
