"""The scenarios by name, in the order in which they are played."""

from scenario_road import power_on, road

SCENARIOS = {
    "power-on": power_on,
    "road": road,
}
