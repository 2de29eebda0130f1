"""The package is upgraded: which program runs then is what docs/packages.md says."""

import host
import screen
import sticks
from cases import play_cases
from host import Failed
from instrument import PROGRAM_ROW, another_program
from scenario_crash import come_back

LIVE = "/var/lib/updater/updater"
# The installed package with a higher version and another program, made of what is installed.
MAKE_PACKAGE = r"""set -e
folder=$(mktemp -d); mkdir $folder/DEBIAN
dpkg -L updater | while read -r path; do
    if [ -d "$path" ] && [ ! -L "$path" ]; then mkdir -p "$folder$path"; else cp -a "$path" "$folder$path"; fi
done
printf '\nupgraded\n' >>$folder/usr/lib/updater/updater
dpkg-query --status updater | sed '/^Status:/d; /^Conffiles:/,/^[A-Z]/{/^Conffiles:/d; /^ /d}; s/^\(Version: .*\)-\([0-9]*\)$/\1-9/' \
    >$folder/DEBIAN/control
for part in postinst postrm prerm preinst conffiles; do
    [ ! -e /var/lib/dpkg/info/updater.$part ] || cp /var/lib/dpkg/info/updater.$part $folder/DEBIAN/$part
done
dpkg-deb --root-owner-group -b $folder /root/upgrade.deb >/dev/null"""


def upgrade(around):
    """the package upgraded while the program runs, and after a self-update"""
    return play_cases(around, [("while it runs", lambda: while_it_runs(around)),
                               ("after a self-update", lambda: after_self_update(around))])


def install(panel):
    panel.guest.run(MAKE_PACKAGE, seconds=180)
    return panel.guest.run("DEBIAN_FRONTEND=noninteractive dpkg --force-confold -i /root/upgrade.deb", seconds=300)


def running(panel):
    return panel.guest.sha256(f"/proc/{panel.guest.program()}/exe")


def start_again(panel, name):
    panel.tap(screen.CLOSE)
    host.wait_until(lambda: panel.guest.program() == 0, 30, "the program has ended after \"Закрыть\"")
    come_back(panel, name)


def while_it_runs(around):
    panel = around.panel_that_waits("running")
    process, before = panel.guest.program(), running(panel)
    install(panel)
    if (panel.guest.program(), running(panel)) != (process, before):
        raise Failed("the upgrade touched the program that runs")
    if not panel.is_ready():
        raise Failed("the upgrade disturbed the window")
    start_again(panel, "upgraded")
    pristine = panel.guest.sha256("/usr/lib/updater/updater")
    if running(panel) != pristine or pristine == before:
        raise Failed("after its next start not the package's program runs")
    return "runs on; the package's program after its next start"


def after_self_update(around):
    release = around.release("self", program=another_program(around.base.program(), "self"))
    stick = sticks.fat(around.files / "self.img", [release.zip])
    panel = around.panel_that_waits("self-updated")
    panel.plug(stick)
    panel.choose_archive()
    panel.wait_for_marks([PROGRAM_ROW])
    panel.start_update()
    _, no = panel.wait_for_question(200)
    panel.tap(no)
    panel.wait_for_no_box()
    said = install(panel)
    if "has a program of its own, which stays" not in said:
        raise Failed(f"the upgrade does not say that the folder's own program stays: {said[-200:]}")
    start_again(panel, "self-updated")
    if running(panel) != release.program_sha256():
        raise Failed("the upgrade replaced the self-updated program")
    panel.journal.wait("is not the package's program and stays", 10)
    panel.guest.as_account("updater-start --take-package")
    start_again(panel, "taken")
    if running(panel) != panel.guest.sha256("/usr/lib/updater/updater"):
        raise Failed("updater-start --take-package did not bring the package's program")
    return "the self-updated program stays and the upgrade says so; --take-package brings the package's"
