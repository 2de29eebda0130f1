"""USB sticks as files, without loop devices."""

import os

from host import run

MEBIBYTE = 1 << 20


def _blank(path, megabytes):
    path.unlink(missing_ok=True)
    with open(path, "wb") as file:
        file.truncate(megabytes * MEBIBYTE)
    return path


def _size_for(files):
    return max(48, sum(os.path.getsize(file) for file in files) // MEBIBYTE * 11 // 10 + 16)


def fat(path, files, label="USB", megabytes=None):
    """A stick without a partition table, as many are sold."""
    _blank(path, megabytes or _size_for(files))
    run("mkfs.vfat", "-n", label, path)
    for file in files:
        run("mcopy", "-i", path, file, "::" + os.path.basename(file))
    return path


def ext4(path, files, folder, label="USB", megabytes=None):
    """`folder` is emptied and filled; a stick as another panel or PC with Linux makes it."""
    for file in files:
        os.link(file, folder / os.path.basename(file))
    _blank(path, megabytes or _size_for(files) + 16)
    run("mke2fs", "-q", "-F", "-t", "ext4", "-L", label, "-d", folder, path)
    return path


def exfat_in_panel(guest, machine, path, archive_stick, label, megabytes=64):
    """No tool fills an exFAT file system without mounting it: the panel's own kernel does it, from another stick."""
    _blank(path, megabytes)
    source = machine.plug(archive_stick, read_only=True)
    target = machine.plug(path)
    guest.run(f"""set -e
        mkdir -p /run/source /run/target
        find_disk() {{ for i in $(seq 60); do
            for disk in /sys/block/sd*; do [ "$(cat $disk/size)" = $1 ] && echo /dev/$(basename $disk) && return; done
            sleep 0.5; done; exit 1; }}
        from=$(find_disk {archive_stick.stat().st_size // 512}); to=$(find_disk {megabytes * MEBIBYTE // 512})
        mkfs.exfat -q -L '{label}' $to 2>/dev/null || mkfs.exfat -L '{label}' $to
        mount -o ro $from /run/source
        mount $to /run/target
        cp /run/source/* /run/target/
        umount /run/target /run/source""", seconds=180)
    machine.pull(target)
    machine.pull(source)
    return path


def damage(path, offset, length):
    """Overwrites a part with what no file system has there."""
    with open(path, "r+b") as file:
        file.seek(offset)
        file.write(b"\xa5" * length)
    return path
