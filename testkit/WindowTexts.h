#pragma once

/// The boxes at the end of an update.
inline constexpr char Success[] = "Все модули успешно обновлены!\nПрибор необходимо перезагрузить";
inline constexpr char Failure[] = "Произошла ошибка обновления!";
