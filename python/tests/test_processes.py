"""Workers in processes of their own."""
import concurrent.futures
import concurrent.futures.process
import os
import signal
import shutil

import pytest

import quorvex


def mean_of(path):
    with quorvex.open(path) as image:
        return float(image.values().mean())


def die(_):
    os.kill(os.getpid(), signal.SIGKILL)


def test_a_killed_worker_harms_no_other(samples):
    path = samples / "ct.dcm"
    with concurrent.futures.ProcessPoolExecutor(2) as workers:
        expected = mean_of(path)
        assert list(workers.map(mean_of, [path] * 4)) == [expected] * 4
        with pytest.raises(concurrent.futures.process.BrokenProcessPool):
            list(workers.map(die, [1, 2]))
    with concurrent.futures.ProcessPoolExecutor(2) as workers:
        assert list(workers.map(mean_of, [path] * 4)) == [expected] * 4


def test_a_dask_cluster_reads_many_files(samples, tmp_path):
    distributed = pytest.importorskip("distributed")
    paths = [tmp_path / f"{number}.dcm" for number in range(200)]
    for path in paths:
        shutil.copy(samples / "ct.dcm", path)
    try:
        cluster = distributed.LocalCluster(n_workers=2, threads_per_worker=2, dashboard_address=None)
    except OSError as failure:
        pytest.skip(f"no cluster on this machine: {failure}")
    with cluster:
        with distributed.Client(cluster) as client:
            means = client.gather(client.map(mean_of, [str(path) for path in paths], pure=False))
    assert means == [mean_of(paths[0])] * 200
