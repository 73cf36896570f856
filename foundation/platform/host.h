/// The machine and the program that the library runs in. Every answer may be asked for in any
/// thread.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace quorvex {

/// A number that identifies this machine, the same at every start; 0 where the machine has no name.
[[nodiscard]] std::uint32_t MachineNumber() noexcept;
/// From now on MachineNumber() gives `number`; without one, the machine's own again.
void SetMachineNumber(std::optional<std::uint32_t> number) noexcept;

/// A number from 0 to 999,999. A process draws each of them once before it repeats one, and where
/// it starts is random: neither two draws nor two processes of one millisecond are likely to agree.
[[nodiscard]] int RandomSixDigits() noexcept;
/// Draws from `source` from now on, of which the last six digits count; null: from the process's
/// own.
void SetRandomSource(int (*source)() noexcept) noexcept;

/// The directory of the process's executable, with a slash at its end; empty where it is not known.
[[nodiscard]] std::string HostDirectory();
/// From now on HostDirectory() gives `directory`; without one, that of the executable again.
void SetHostDirectory(std::optional<std::string> directory);

}  // namespace quorvex
