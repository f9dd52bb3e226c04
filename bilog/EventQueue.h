// EventQueue.h - events on their way from the host's threads to the database.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <iterator>
#include <list>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>

#include "platform/EndingLock.h"

namespace Drive::Bilog {

// First in, first out; an event comes with its packed texts.
//
// Many events may wait here, for hours: they lie in blocks of kBlockEvents, so that one takes little more
// than its bytes, and so that the memory of a burst goes back to the system when the blocks are freed.
// Surprises: when the process ends and a thread that is gone holds the lock, what cannot be reached is given
//            up: an event that is pushed then is lost, and nothing is popped.
// Thread-safety: every operation may be called from any thread.
template <typename Event>
class EventQueue {
 public:
  static constexpr std::size_t kBlockEvents = 100;

  class Block {
   public:
    std::size_t Size() const { return m_size; }

    // Calls `function` with each event and its texts, oldest first.
    template <typename Function>
    void ForEach(const Function& function) const {
      std::size_t begin = 0;
      for (std::size_t i = 0; i < m_size; ++i) {
        const Entry& entry = m_entries[i];
        function(entry.event, std::string_view(m_texts).substr(begin, entry.textsEnd - begin));
        begin = entry.textsEnd;
      }
    }

   private:
    friend class EventQueue;
    struct Entry {
      Event event;
      std::size_t textsEnd = 0;
    };

    std::array<Entry, kBlockEvents> m_entries;
    std::size_t m_size = 0;
    std::string m_texts;  // of all events
  };

  void Push(Event event, std::string_view texts) {
    const auto lock = Platform::LockUnlessEnding(m_mutex);
    if (!lock.owns_lock()) {
      return;
    }
    if (m_blocks.empty() || m_blocks.back().Size() == kBlockEvents) {
      AddBlock();
    }
    Block& block = m_blocks.back();
    block.m_texts.append(texts);
    block.m_entries[block.m_size++] = {std::move(event), block.m_texts.size()};
    ++m_size;
  }

  std::size_t Size() const {
    const auto lock = Platform::LockUnlessEnding(m_mutex);
    return lock.owns_lock() ? m_size : 0;
  }

  // The oldest events, at most `limit` of them, which must be a multiple of kBlockEvents: but for the last
  // block, all are full.
  std::list<Block> Pop(std::size_t limit) {
    std::list<Block> oldest;
    const auto lock = Platform::LockUnlessEnding(m_mutex);
    if (lock.owns_lock()) {
      const std::size_t count = std::min(limit / kBlockEvents, m_blocks.size());
      const auto end = std::next(m_blocks.begin(), static_cast<std::ptrdiff_t>(count));
      oldest.splice(oldest.begin(), m_blocks, m_blocks.begin(), end);
      for (const Block& block : oldest) {
        m_size -= block.Size();
      }
    }
    return oldest;
  }

 private:
  // With room for a little more text than the last block holds, since the next one will be alike; but one
  // huge text is no sign of another.
  void AddBlock() {
    const std::size_t textBytes = m_blocks.empty() ? 0 : m_blocks.back().m_texts.size();
    std::list<Block> added(1);
    added.back().m_texts.reserve(std::min<std::size_t>(textBytes + textBytes / 16, kBlockEvents * 1024));
    m_blocks.splice(m_blocks.end(), added);
  }

  mutable std::mutex m_mutex;  // guards what follows
  std::list<Block> m_blocks;   // oldest first; a list, which keeps no memory when it is empty
  std::size_t m_size = 0;      // events
};

}  // namespace Drive::Bilog
