"""The command packaging/try-panel; see README.md."""

import argparse
import sys
from pathlib import Path

import host
import scenario
from base import Base
from scenarios import SCENARIOS

IMAGE = host.WORK / "panel-arm64.img"
KEY = host.WORK / "try-panel-key"


def arguments():
    parser = argparse.ArgumentParser(
        prog="try-panel", description="Starts the panel's image in an emulator, with a simulated instrument, works it with "
        "fingers, and checks what comes of it. Pictures, journal and card of each scenario are left in "
        f"{host.RESULTS.relative_to(host.ROOT)}. Without a name all scenarios are played.",
        epilog="Scenarios: " + "; ".join(f"{name}: {function.__doc__.strip()}" for name, function in SCENARIOS.items()))
    parser.add_argument("scenario", nargs="*", metavar="SCENARIO")
    parser.add_argument("--image", type=Path, default=IMAGE, help="the card; default: %(default)s, made by build-image if missing")
    parser.add_argument("--key", type=Path, default=KEY, help="private key that may log in as root; default: %(default)s")
    parser.add_argument("--cuts", type=int, default=20, metavar="N",
                        help="moments of the scenario power besides the question; default: %(default)s")
    options = parser.parse_args()
    for name in options.scenario:
        if name not in SCENARIOS:
            parser.error(f"\"{name}\" is no scenario: there are {', '.join(SCENARIOS)}")
    # qemu-img would look for a relative path beside the card that lies over the image.
    options.image = options.image.resolve()
    return options


def prepare_image(options):
    if options.image != IMAGE or options.key != KEY:
        for file in (options.image, options.key):
            if not file.is_file():
                raise host.Unusable(f"{file} is not there: leave --image and --key out to have both made")
        return
    if not KEY.exists():
        host.run("ssh-keygen", "-q", "-t", "ed25519", "-N", "", "-f", KEY)
        IMAGE.unlink(missing_ok=True)
    if not IMAGE.exists():
        host.say("The panel's image, which takes a while")
        host.run(host.ROOT / "packaging" / "build-image", "--address", "10.0.2.15/24", "--ssh-key", f"{KEY}.pub")


def main():
    options = arguments()
    host.end_on_signals()
    try:
        host.prepare_tools()
        prepare_image(options)
        base = Base(options.image, options.key)
        base.prepare()
        outcomes = [scenario.play(base, name, SCENARIOS[name], options.cuts) for name in options.scenario or SCENARIOS]
    except (host.Unusable, host.Failed) as error:
        print(f"try-panel: {error}", file=sys.stderr)
        return 2
    finally:
        host.end_all()
    scenario.print_table(outcomes)
    return 0 if all(outcome.holds for outcome in outcomes) else 1


sys.exit(main())
