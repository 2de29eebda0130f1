"""Where things are on the program's screen of 1024 x 600. All numbers that a change of the window changes stand here."""

WIDTH, HEIGHT = 1024, 600

ARCHIVE = (96, 552)
UPDATE = (742, 552)
CLOSE = (928, 552)
DEVICE = (540, 43)
ARCHIVE_TITLE = "Открыть архив с прошивками"
FILE_TITLE = "Открыть файл с прошивкой"

_FIRST_ROW = 144
_ROW_HEIGHT = 36
_ICON_SIZE = 24


def _row(index):
    return _FIRST_ROW + index * _ROW_HEIGHT


def file_button(index):
    return 871, _row(index)


def mark_button(index):
    return 961, _row(index)


def status_area(index):
    return 20, _row(index) - _ICON_SIZE // 2, _ICON_SIZE, _ICON_SIZE


def mark_area(index):
    return 961 - _ICON_SIZE // 2, _row(index) - _ICON_SIZE // 2, _ICON_SIZE, _ICON_SIZE


# What the first row has as its name.
FIRST_NAME = (20, _FIRST_ROW - 14, 300, 28)

UPDATE_ICON = (670, 530, 36, 44)

# The file dialog, relative to its own corners.
_LIST_ROW = 215, 78
_LIST_ROW_HEIGHT = 40
_ACCEPT_FROM_END = 59, 77
_REJECT_FROM_END = 59, 31


def dialog_row(dialog, index):
    return dialog["x"] + _LIST_ROW[0], dialog["y"] + _LIST_ROW[1] + index * _LIST_ROW_HEIGHT


def dialog_row_area(dialog, index):
    x, y = dialog_row(dialog, index)
    return x - 50, y - 10, 100, 20


def dialog_path_area(dialog):
    """The folder's name above the list."""
    return dialog["x"] + 130, dialog["y"] + 18, 300, 26


# What is chosen in a list has this colour behind it.
SELECTION = (47, 139, 196)


def dialog_accept(dialog):
    return dialog["x"] + dialog["width"] - _ACCEPT_FROM_END[0], dialog["y"] + dialog["height"] - _ACCEPT_FROM_END[1]


def dialog_reject(dialog):
    return dialog["x"] + dialog["width"] - _REJECT_FROM_END[0], dialog["y"] + dialog["height"] - _REJECT_FROM_END[1]


# The program behind the updater: three buttons in the middle.
MENU_START = (512, 196)
MENU_RESTART = (512, 300)
MENU_OFF = (512, 404)
