"""The scenarios by name, in the order in which they are played."""

from scenario_clock import clock
from scenario_crash import crash
from scenario_history import history
from scenario_network import network
from scenario_power import power
from scenario_road import power_on, road
from scenario_small import small
from scenario_stick import stick
from scenario_touch import touch
from scenario_upgrade import upgrade

SCENARIOS = {
    "power-on": power_on,
    "road": road,
    "history": history,
    "crash": crash,
    "touch": touch,
    "stick": stick,
    "small": small,
    "clock": clock,
    "upgrade": upgrade,
    "network": network,
    "power": power,
}
