"""Corrects the registry where it no longer fits the working directory.

A working directory that was moved, or copied to another machine, lists paths that are gone; a
program that was killed may have left a whole network that is not listed, or a name that changed in
one of the two places where it stands.
"""

import os
import re
from collections.abc import Iterator
from pathlib import Path

import registry

# A network's directory reaches the shell of its terminal as it stands. The programs in C++ have the
# same rule, in network_creation.cpp.
_PLAIN_PATH = re.compile(r"[\w/.,:@%+=-]+")


def _networks_here() -> list[Path]:
    """The networks in the working directory, whether they are listed or not."""
    work = Path.cwd()
    return [work / entry.name for entry in sorted(os.scandir(), key=lambda entry: entry.name)
            if entry.name[0] != "." and _PLAIN_PATH.fullmatch(entry.name)
            and entry.is_dir(follow_symlinks=False) and registry.is_network(work / entry.name)]


def _adopt_moved(lines: list[bytes], unlisted: list[Path]) -> Iterator[str]:
    """Correct the paths that are gone where a network of that directory's name stands here. Yields
    what to say."""
    for network in registry.networks(lines):
        here = Path.cwd() / network.directory.name
        if here in unlisted and not registry.is_network(network.directory):
            unlisted.remove(here)
            lines[network.number] = registry.line(network.recorded, here)
            found, = registry.networks([lines[network.number]])
            yield f"Réseau « {found.name} » : retrouvé ici, la liste des réseaux est corrigée."


def _adopt_unlisted(lines: list[bytes], unlisted: list[Path]) -> Iterator[str]:
    """List the networks that are not, unless their names are taken. Yields what to say."""
    for here in unlisted:
        name = registry.names.display_name(here)
        recorded = registry.recorded_name(name, here)
        if recorded not in (network.recorded for network in registry.networks(lines)):
            lines.append(registry.line(recorded, here))
            yield f"Réseau « {name} » : trouvé ici, il est ajouté à la liste des réseaux."


def _follow_names(lines: list[bytes]) -> None:
    """Have each line's name follow the network's nom.txt, unless another line has it."""
    for network in registry.networks(lines):
        wanted = registry.recorded_name(network.name, network.directory)
        taken = {other.recorded for other in registry.networks(lines)}
        if (wanted not in taken and registry.is_network(network.directory)
                and (network.directory / "nom.txt").exists()):
            lines[network.number] = registry.line(wanted, network.directory)


def _correct(lines: list[bytes]) -> list[str]:
    """Correct the lines. Returns what to say."""
    listed = {os.path.realpath(network.directory) for network in registry.networks(lines)}
    unlisted = [here for here in _networks_here() if str(here) not in listed]
    if unlisted and not _PLAIN_PATH.fullmatch(str(Path.cwd())):
        return [f"Les réseaux de {Path.cwd()} ne peuvent pas être repris : ce chemin contient un "
                "espace ou un caractère que le terminal ne prendrait pas tel quel."]
    said = [*_adopt_moved(lines, unlisted), *_adopt_unlisted(lines, unlisted)]
    _follow_names(lines)
    return said


def adopt() -> list[str]:
    """Correct the registry. Returns what to say, in French: what was corrected, and that networks
    cannot be listed, as long as they cannot.

    Raises OSError, with the registry as it was, if it cannot be read or written."""
    before = registry.read()
    lines = list(before)
    said = _correct(lines)
    if lines == before:  # most often; nothing need be written then
        return said
    with registry.locked():
        lines = registry.read()
        said = _correct(lines)
        registry.write(lines)
    return said
