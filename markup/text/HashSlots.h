#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

/// A constant table's rows sorted into hash slots, made at compile time. Within a slot the rows
/// keep the order of the table.
template <std::size_t Slots, std::size_t Rows>
class HashSlots {
  public:
    /// Sorts the rows; `slotOf(row)` is the slot of a row, below `Slots`.
    template <class Row, class SlotOf>
    constexpr HashSlots(const std::array<Row, Rows>& rows, SlotOf slotOf) {
        for (const Row& row : rows) {
            ++first_[slotOf(row) + 1];
        }
        for (std::size_t slot = 0; slot < Slots; ++slot) {
            first_[slot + 1] = static_cast<std::uint16_t>(first_[slot + 1] + first_[slot]);
        }
        std::array<std::uint16_t, Slots + 1> next = first_;
        for (std::size_t index = 0; index < Rows; ++index) {
            order_[next[slotOf(rows[index])]++] = static_cast<std::uint16_t>(index);
        }
    }

    /// Indices of the rows in a slot, in table order.
    constexpr std::span<const std::uint16_t> rowsOf(std::size_t slot) const {
        return std::span(order_).subspan(first_[slot],
                                         std::size_t{first_[slot + 1]} - first_[slot]);
    }

    constexpr std::size_t emptySlots() const {
        std::size_t count = 0;
        for (std::size_t slot = 0; slot < Slots; ++slot) {
            count += rowsOf(slot).empty() ? 1 : 0;
        }
        return count;
    }

  private:
    std::array<std::uint16_t, Slots + 1> first_{};  // start of each slot in order_, and the end
    std::array<std::uint16_t, Rows> order_{};       // row indices, slot by slot
};
