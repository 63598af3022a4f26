"""Editing, reading and writing graphs."""

from __future__ import annotations

import copy
import json
import os
import pathlib
import pickle
import shutil
import threading
from typing import Any

import pytest

import zelnor
from zelnor import Graph, Record


def test_a_new_graph_is_empty() -> None:
    assert Graph().nodes() == []
    assert len(Graph()) == 0


def test_nodes_count_from_one() -> None:
    graph = Graph()
    assert [graph.add_node(Record("a")), graph.add_node(Record("b"))] == [1, 2]
    assert graph.nodes() == [1, 2]


def test_links_are_pairs_of_source_and_target(graph: Graph) -> None:
    assert graph.links() == [(1, 3), (3, 2)]


def test_a_link_without_a_record_has_an_empty_group(graph: Graph) -> None:
    assert graph.link(1, 3) == Record()


def test_the_record_of_a_node_is_a_copy(graph: Graph) -> None:
    graph.node(2)["container"] = "mov"
    assert graph.node(2)["container"].as_str() == "mp4"


def test_the_record_that_was_added_is_a_copy() -> None:
    record = Record("a", {"b": 1})
    graph = Graph()
    graph.add_node(record)
    record["b"] = 2
    assert graph.node(1)["b"].as_int() == 1


def test_inputs_and_outputs_are_those_of_a_node_or_of_the_graph(graph: Graph) -> None:
    assert graph.inputs() == [1]
    assert graph.outputs() == [2]
    assert graph.inputs(2) == [3]
    assert graph.outputs(1) == [3]


def test_nodes_and_links_are_removed(graph: Graph) -> None:
    graph.remove_link(3, 2)
    graph.remove_node(2)
    assert graph.nodes() == [1, 3]
    assert graph.links() == [(1, 3)]


@pytest.mark.parametrize("call", [lambda g: g.node(7), lambda g: g.remove_node(7), lambda g: g.inputs(7)])
def test_a_node_that_is_not_there_is_named(graph: Graph, call: Any) -> None:
    with pytest.raises(zelnor.NodeNotFound) as caught:
        call(graph)
    assert caught.value.requested_node_id == 7
    assert caught.value.requested_link is None
    assert str(caught.value) == "There is no node 7"


def test_a_link_that_is_not_there_is_named(graph: Graph) -> None:
    with pytest.raises(zelnor.LinkNotFound) as caught:
        graph.link(2, 1)
    assert caught.value.requested_link == (2, 1)


def test_a_link_that_is_there_is_named(graph: Graph) -> None:
    with pytest.raises(zelnor.LinkExists) as caught:
        graph.add_link(1, 3)
    assert caught.value.requested_link == (1, 3)
    assert graph.links() == [(1, 3), (3, 2)]


def test_a_node_with_links_is_not_removed(graph: Graph) -> None:
    with pytest.raises(zelnor.LinkExists):
        graph.remove_node(1)
    assert graph.nodes() == [1, 2, 3]


@pytest.mark.parametrize("record", [None, 1, "target", {"target": {}}, []])
def test_what_is_not_a_record_is_not_added(record: Any) -> None:
    graph = Graph()
    with pytest.raises(TypeError):
        graph.add_node(record)
    assert len(graph) == 0


@pytest.mark.parametrize("node", [None, "1", 1.0, True, b"1"])
def test_an_identifier_is_an_integer(graph: Graph, node: Any) -> None:
    with pytest.raises(TypeError):
        graph.node(node)


@pytest.mark.parametrize("node", [2**63, -(2**63) - 1, pytest.param(10**5000, id="huge")])
def test_an_identifier_beyond_64_bits_is_an_overflow(graph: Graph, node: int) -> None:
    with pytest.raises(OverflowError, match="^expected an integer from -9223372036854775808 to 9223372036854775807$"):
        graph.node(node)


def test_paths_follow_links(graph: Graph) -> None:
    assert graph.path_exists(1, 2)
    assert not graph.path_exists(2, 1)


def test_a_valid_topology_has_no_faults(graph: Graph) -> None:
    assert graph.topology_is_valid()
    assert graph.topology_faults() == []
    assert graph.faults() == []


def test_the_faults_of_a_topology_tell_the_nodes(graph: Graph) -> None:
    graph.add_link(2, 1)
    graph.add_node(Record("alone"))
    kinds = zelnor.TopologyFaultKind
    assert not graph.topology_is_valid()
    assert graph.topology_faults() == [
        zelnor.TopologyFault(kinds.UNLINKED_NODES, ((4,),)),
        zelnor.TopologyFault(kinds.CYCLE, ((1, 3, 2),)),
    ]


def test_the_faults_for_people_are_sentences(graph: Graph) -> None:
    graph.add_node(Record("alone"))
    [fault] = graph.faults("job.json")
    assert fault.kind is zelnor.JobFaultKind.UNLINKED_NODES
    assert fault.groups == ((4,),)
    assert fault.sentence == str(fault)
    assert "4" in fault.sentence  # the wording is the library's


def test_a_document_comes_back_as_it_was(graph: Graph) -> None:
    again = Graph.from_json(graph.to_json())
    assert again.nodes() == graph.nodes()
    assert again.links() == graph.links()
    assert [again.node(node) for node in again.nodes()] == [graph.node(node) for node in graph.nodes()]
    assert again.link(3, 2) == graph.link(3, 2)


def test_an_empty_record_without_a_name_is_left_out_of_a_document(graph: Graph) -> None:
    assert graph.link(1, 3) == Record()
    assert Graph.from_json(graph.to_json()).link(1, 3) == Record("data")


def test_a_document_is_the_librarys() -> None:
    graph = Graph()
    graph.add_node(Graph.raw_stream(3))
    assert json.loads(graph.to_json()) == {
        "vertices": [{"id": 1, "data": {"data": {"streamRaw": {"id": 3}}}}],
        "edges": [],
    }


def test_a_document_is_saved_and_loaded(graph: Graph, tmp_path: pathlib.Path) -> None:
    graph.save(tmp_path / "job.json")
    assert (tmp_path / "job.json").read_text() == graph.to_json()
    assert zelnor.diff(Graph.from_json(graph.to_json()), Graph.load(tmp_path / "job.json")) == []
    assert os.listdir(tmp_path) == ["job.json"]


@pytest.mark.parametrize("convert", [str, os.fsencode, pathlib.Path])
def test_a_path_may_have_any_form(graph: Graph, tmp_path: pathlib.Path, convert: Any) -> None:
    path = convert(str(tmp_path / "jöb.json"))
    graph.save(path)
    assert len(Graph.load(path)) == 3


def test_a_path_may_have_bytes_that_are_not_utf8(graph: Graph, tmp_path: pathlib.Path) -> None:
    path = os.fsencode(tmp_path) + b"/\xe9.json"
    graph.save(path)
    assert os.listdir(os.fsencode(tmp_path)) == [b"\xe9.json"]
    assert len(Graph.load(path)) == 3


@pytest.mark.parametrize("path", ["a\0b", b"a\0b"])
def test_a_nul_in_a_path_is_refused(graph: Graph, path: Any) -> None:
    with pytest.raises(ValueError, match="null"):
        graph.save(path)
    with pytest.raises(ValueError, match="null"):
        Graph.load(path)


@pytest.mark.parametrize("path", [None, 1, 1.5, [], object()])
def test_what_is_not_a_path_is_refused(graph: Graph, path: Any) -> None:
    with pytest.raises(TypeError):
        graph.save(path)


def test_a_file_that_cannot_be_read_is_named(tmp_path: pathlib.Path) -> None:
    with pytest.raises(zelnor.CoreException) as caught:
        Graph.load(tmp_path / "no.json")
    assert str(caught.value) == f"Cannot open '{tmp_path}/no.json': No such file or directory"
    assert caught.value.description == str(caught.value)


def test_a_file_that_cannot_be_written_leaves_what_there_was(graph: Graph, tmp_path: pathlib.Path) -> None:
    with pytest.raises(zelnor.CoreException):
        graph.save(tmp_path)
    assert os.listdir(tmp_path) == []


@pytest.mark.parametrize("text", ["", "x", "[]", "\0", "{}", '{"vertices":[]}'])
def test_a_text_that_is_not_a_job_is_refused(text: str) -> None:
    with pytest.raises(zelnor.BadJson) as caught:
        Graph.from_json(text)
    assert caught.value.json_bad_structure == str(caught.value)


def test_a_link_of_a_document_to_nowhere_is_refused() -> None:
    with pytest.raises(zelnor.NodeNotFound) as caught:
        Graph.from_json('{"vertices":[],"edges":[{"id":1,"from":1,"to":2}]}')
    assert caught.value.requested_node_id == 1


def test_a_value_of_a_document_that_is_none_is_refused_with_its_place() -> None:
    with pytest.raises(zelnor.PropertyException, match=r"^data\.a"):
        Graph.from_json('{"vertices":[{"id":1,"data":{"data":{"a":1.5}}}],"edges":[]}')


@pytest.mark.parametrize("text", [None, b"{}", 1])
def test_a_document_is_a_text(text: Any) -> None:
    with pytest.raises(TypeError):
        Graph.from_json(text)


def test_a_surrogate_in_a_document_is_refused() -> None:
    with pytest.raises(UnicodeEncodeError):
        Graph.from_json('{"\ud800":1}')


def test_records_of_511_groups_are_saved_and_those_of_512_are_refused() -> None:
    def deep(depth: int) -> Record:
        value: Any = {}
        for _ in range(depth - 1):
            value = {"g": value}
        return Record("x", value)

    graph = Graph()
    graph.add_node(deep(511))
    assert zelnor.diff(graph, Graph.from_json(graph.to_json())) == []
    graph.add_node(deep(512))
    with pytest.raises(zelnor.PropertyException, match="groups are nested deeper than 512$"):
        graph.to_json()


def test_a_graph_is_drawn_in_dot(graph: Graph) -> None:
    assert graph.to_dot().startswith("digraph")
    assert graph.to_dot().count("->") == 2


@pytest.mark.skipif(shutil.which("dot") is None, reason="Graphviz is not installed")
def test_a_notebook_shows_a_graph_as_svg(graph: Graph) -> None:
    svg = graph._repr_svg_()
    assert svg is not None
    assert svg.startswith("<svg")
    assert svg.rstrip().endswith("</svg>")
    assert "CODEC_ID_H264" in svg


@pytest.mark.skipif(shutil.which("dot") is None, reason="Graphviz is not installed")
def test_markup_in_a_record_is_text_in_the_svg() -> None:
    graph = Graph()
    graph.add_node(Record("x", '</text><script>alert("1")</script>'))
    svg = graph.to_svg()
    assert svg is not None
    assert "<script" not in svg


def test_without_graphviz_there_is_no_svg(graph: Graph, monkeypatch: pytest.MonkeyPatch) -> None:
    monkeypatch.setenv("PATH", "/nonexistent")
    assert graph._repr_svg_() is None


def test_a_dot_that_fails_makes_no_svg(
    graph: Graph, tmp_path: pathlib.Path, monkeypatch: pytest.MonkeyPatch
) -> None:
    dot = tmp_path / "dot"
    dot.write_text("#!/bin/sh\nexit 1\n")
    dot.chmod(0o755)
    monkeypatch.setenv("PATH", f"{tmp_path}:/usr/bin:/bin")
    assert graph.to_svg() is None


def test_a_drawing_is_written_as_dot(graph: Graph, tmp_path: pathlib.Path) -> None:
    graph.draw(tmp_path / "job.dot")
    assert (tmp_path / "job.dot").read_text() == graph.to_dot()


@pytest.mark.skipif(shutil.which("dot") is None, reason="Graphviz is not installed")
@pytest.mark.parametrize("extension, begin", [("svg", b"<?xml"), ("PNG", b"\x89PNG"), ("pdf", b"%PDF")])
def test_a_drawing_is_written_as_its_extension_says(
    graph: Graph, tmp_path: pathlib.Path, extension: str, begin: bytes
) -> None:
    path = tmp_path / f"job.{extension}"
    graph.draw(path)
    assert path.read_bytes().startswith(begin)


@pytest.mark.parametrize("name", ["job", "job.jpg", "job.json", "svg", ".svg"])
def test_a_drawing_of_another_kind_is_refused(graph: Graph, tmp_path: pathlib.Path, name: str) -> None:
    with pytest.raises(ValueError) as caught:
        graph.draw(tmp_path / name)
    assert str(caught.value) == f"a drawing has one of the extensions .dot, .gv, .svg, .png, .pdf, not '{name}'"
    assert os.listdir(tmp_path) == []


def test_a_picture_without_graphviz_is_refused(
    graph: Graph, tmp_path: pathlib.Path, monkeypatch: pytest.MonkeyPatch
) -> None:
    monkeypatch.setenv("PATH", "/nonexistent")
    with pytest.raises(FileNotFoundError, match="^Graphviz's program dot was not found$"):
        graph.draw(tmp_path / "job.svg")
    assert os.listdir(tmp_path) == []


def test_repr_counts_nodes_and_links(graph: Graph) -> None:
    assert repr(graph) == "<zelnor.Graph: 3 nodes, 2 links>"


def test_the_records_of_jobs_are_made(mp4: zelnor.Preset) -> None:
    assert Graph.in_file("in.mkv").to_python() == {"$$TYPE_ID$$": "sourceFile", "filePath": "in.mkv"}
    assert Graph.raw_stream(1) == Record("streamRaw", {"id": 1})
    assert Graph.controlled_by(2)[0].value == 2
    target = Graph.out_file(mp4, "out.mp4")
    assert target["container"].as_str() == "mp4"
    assert "$$STREAMS$$" not in target
    assert Graph.out_file(mp4, "out.vob", lossless_dvd=True)["container"].as_str() == "dvd"


def test_a_stream_is_merged_into_a_copy_of_the_record() -> None:
    stream = Graph.raw_stream(0)
    merged = Graph.with_merged_stream(stream, Record(""), 2)
    assert stream == Graph.raw_stream(0)
    assert merged["$$MERGE_WITH$$"][0]["$$MERGE_WITH$$"].as_int() == 2


@pytest.mark.parametrize("stream", [-1, 2**32])
def test_a_stream_index_beyond_32_bits_is_an_overflow(stream: int) -> None:
    with pytest.raises(OverflowError, match="^expected an integer from 0 to 4294967295$"):
        Graph.raw_stream(stream)


def test_no_preset_is_refused() -> None:
    with pytest.raises(TypeError):
        Graph.out_file(None, "out.mp4")  # type: ignore[arg-type]


@pytest.mark.parametrize("clone", [copy.copy, copy.deepcopy, pickle.dumps])
def test_a_graph_is_copied_by_its_document_only(graph: Graph, clone: Any) -> None:
    with pytest.raises(TypeError, match="cannot pickle"):
        clone(graph)


@pytest.mark.parametrize("clone", [lambda g: pickle.dumps(g, 0), lambda g: pickle.dumps(g, 1), lambda g: g.__reduce__()])
def test_old_ways_to_pickle_a_graph_are_refused(graph: Graph, clone: Any) -> None:
    with pytest.raises(TypeError, match="^cannot create 'pybind11_object' instances$"):
        clone(graph)


def test_a_graph_is_only_made_whole() -> None:
    with pytest.raises(TypeError, match="not safe"):
        object.__new__(Graph)
    with pytest.raises(TypeError, match="takes no arguments"):
        Graph(1)  # type: ignore[call-arg]


def test_new_of_the_base_does_not_make_a_graph_without_contents() -> None:
    with pytest.raises(TypeError):
        Graph.__base__.__new__(Graph)  # type: ignore[union-attr]


def test_the_base_of_a_graph_is_not_made() -> None:
    with pytest.raises(TypeError, match="^cannot create 'pybind11_object' instances$"):
        Graph.__base__()  # type: ignore[misc]
    with pytest.raises(TypeError, match="^cannot create 'Odd' instances$"):
        type("Odd", (Graph.__base__,), {})()  # type: ignore[arg-type]


def test_a_graph_is_not_derived_from() -> None:
    with pytest.raises(TypeError):
        type("Derived", (Graph,), {})


def test_threads_may_edit_graphs_of_their_own() -> None:
    sizes = []

    def edit() -> None:
        graph = Graph()
        for _ in range(200):
            graph.add_node(Record("x", {"a": 1}))
        sizes.append(len(Graph.from_json(graph.to_json())))

    threads = [threading.Thread(target=edit) for _ in range(4)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert sizes == [200] * 4


def test_threads_may_edit_one_graph() -> None:
    graph = Graph()

    def edit() -> None:
        for _ in range(200):
            graph.add_node(Record("x"))
            graph.to_json()

    threads = [threading.Thread(target=edit) for _ in range(4)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert len(graph) == 800


def test_a_graph_becomes_a_page(graph: Graph) -> None:
    page = graph.to_html("job <1>.json", opens_sources=False)
    assert page.lower().startswith("<!doctype html>")
    assert "job &lt;1&gt;.json" in page
    assert "<svg" in page
    with pytest.raises(TypeError):
        graph.to_html(opens_sources=1)  # type: ignore[arg-type]


def test_a_page_without_graphviz_is_refused(graph: Graph, monkeypatch: pytest.MonkeyPatch) -> None:
    monkeypatch.setenv("PATH", "/nonexistent")
    with pytest.raises(zelnor.DrawingException, match="needs Graphviz"):
        graph.to_html(opens_sources=False)
