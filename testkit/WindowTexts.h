#pragma once

/// Texts of the message boxes at the end of an update.
inline constexpr char Success[] = "Все модули успешно обновлены!\nПрибор необходимо перезагрузить";
inline constexpr char Failure[] = "Произошла ошибка обновления!";

/// The device button during a search, and the label while versions are read.
inline constexpr char Searching[] = "Поиск прибора...";
inline constexpr char Reading[] = "Считываю версии модулей...";
