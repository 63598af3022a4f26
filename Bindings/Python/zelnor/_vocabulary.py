"""The vocabulary: the classes and the enumerations of constants, made from the library's own lists."""

from __future__ import annotations

from enum import IntEnum
from typing import Any, Dict

from . import _zelnor


class _Constants(type):
    """The class of classes of constants, which nobody changes."""

    def __setattr__(cls, name: str, value: object) -> None:
        raise AttributeError(f"{cls.__name__}.{name} is a constant")

    def __delattr__(cls, name: str) -> None:
        raise AttributeError(f"{cls.__name__}.{name} is a constant")

    def __call__(cls, *arguments: object, **named: object) -> Any:
        raise TypeError(f"{cls.__name__} holds constants and has no instances")


_DOCUMENTATION = {
    "IFormat": "Constants of all descriptors.",
    "IFormatCodec": "Constants of all kinds of codec.",
    "IFormatCodecAudio": "Constants of audio codecs.",
    "IFormatCodecSubtitle": "Constants of subtitle codecs.",
    "IFormatCodecVideo": "Constants of video codecs.",
    "IFormatFile": "Constants of files: keys, containers, groups of file dialogs, DVD disks.",
    "IPreset": "Constants of presets.",
    "IPropertyConstraint": "Constants of constraints.",
    "ITranscodingMetaGraph": "Constants of the records of a job's nodes and links.",
    "JobKeys": "Keys of a job's records that the vocabulary does not have.",
    "PixFmt": "Pixel formats, by the numbers that records hold.",
    "SampleFormats": "Audio sample formats, by FFmpeg's numbers.",
    "ChannelLayout": "Channel layouts.",
}


def _make_constants(name: str, members: Dict[str, Any]) -> type:
    contents = {"__doc__": _DOCUMENTATION[name], "__module__": "zelnor", "__slots__": (), **members}
    return _Constants(name, (), contents)


def _make_numbers(name: str, members: Dict[str, int]) -> Any:
    made = IntEnum(name, members, module="zelnor")  # type: ignore[misc]
    made.__doc__ = _DOCUMENTATION[name]
    return made


for _name, _members in _zelnor._constants.items():
    globals()[_name] = _make_constants(_name, _members)
for _name, _members in _zelnor._numbers.items():
    globals()[_name] = _make_numbers(_name, _members)

__all__ = [*_zelnor._constants, *_zelnor._numbers]
