#!/usr/bin/env python3
"""Takes every file through every verb of the command, and holds each call to what the command promises.

usage: every_verb.py QUORVEX FILE|FOLDER... [--manifest MANIFEST.json] [--share I/N] [--verbs LIST]
                     [--cuts PERCENT,...] [--under "TOOL ARGUMENTS"] [--twice] [--limit SECONDS]

A call fails that ends by a signal or a status other than 0 and 1, that a sanitizer or TOOL complains about,
that takes longer than the limit, that says 0 and leaves no output, or says 1 and leaves one or no complaint.
With --twice, each call is made with two different fillings of fresh heap memory, and both must give the same
bytes. With a manifest, `info` must say 0 for every file that it does not mark `tolerate`. Files of equal content
are taken once.
"""
import argparse
import collections
import concurrent.futures
import hashlib
import json
import os
import shlex
import subprocess
import sys
import tempfile
import time

REPOSITORY = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
NOT_DICOM = ('.txt', '.gz', '.dump', '.py', '.pyc', '.json', '.md')
REPORT_STATUS = 99
SANITIZERS = {
    'ASAN_OPTIONS': f'exitcode={REPORT_STATUS}:detect_stack_use_after_return=1:strict_string_checks=1',
    'UBSAN_OPTIONS': f'exitcode={REPORT_STATUS}:print_stacktrace=1',
    'LSAN_OPTIONS': f'exitcode={REPORT_STATUS}',
}
# What the C library fills fresh heap memory with, and its opposite on release.
FILLINGS = ('85', '170')
# Objects that have new UIDs and the time in them, or bytes that a coder makes of what lies behind its rows.
MOMENTARY = (('capture', 'grey'), ('capture', 'colour, two frames'), ('state', 'made'), ('convert', 'jpeg'),
             ('convert', 'jpeg12'), ('convert', 'j2k'), ('convert', 'htj2k'),
             ('convert', 'htj2k-lossless'), ('convert', 'htj2k-rpcl'))
TARGETS = ('implicit', 'explicit', 'deflated', 'rle', 'jpeg', 'jpeg12', 'jpeg-lossless', 'j2k', 'j2k-lossless',
           'htj2k', 'htj2k-lossless', 'htj2k-rpcl', 'jpegls-lossless', 'jpegxl-lossless', 'jpegxl-jpeg',
           'deflated-frames', 'encapsulated')

# Verb, what is done with it, arguments. {file} is the input, {out} an output that must be there after a 0;
# {state} is a state made for this very file, {ct}, {grey} and {colour} are good inputs of other verbs.
CALLS = [
    ('info', 'text', 'info {file}'),
    ('info', 'json', 'info --json {file}'),
    ('frame', 'all', 'frame {file} --all -o {out}'),
    ('frame', 'none such', 'frame {file} --frame 100000 -o {out}'),
    ('render', 'plain', 'render {file} -o {out}'),
    ('render', 'everything on', 'render {file} -o {out} --view 301x203 --window 40,400 --zoom 1.7 --pan 5,-9'
                                ' --rotate 90 --flip --invert --overlays --shutter --annotations'),
    ('render', 'result', 'render {file} -o {out} --result --rotate 270 --zoom 0.37 --overlays --shutter'),
    ('render', 'region', 'render {file} -o {out} --region 1,1,40,30'),
    ('render', 'one pixel', 'render {file} -o {out} --view 1x1'),
    ('render', 'as a state', 'render {ct} -o {out} --state {file} --shutter --annotations'),
    ('thumbnail', 'png', 'thumbnail {file} -o {out}'),
    ('thumbnail', 'data range', 'thumbnail {file} -o {out} --data-range --size 200x33'),
    ('thumbnail', 'jpeg', 'thumbnail {file} -o {out} --format jpeg'),
    ('thumbnail', 'jpeg-lossless', 'thumbnail {file} -o {out} --format jpeg-lossless --size 63x64'),
    *(('convert', target, 'convert {file} -o {out} --to ' + target) for target in TARGETS),
    ('capture', 'grey', 'capture {file} {grey} -o {out} --to jpeg-lossless'),
    ('capture', 'colour, two frames', 'capture {file} {colour} {colour} -o {out} --to j2k'),
    ('state', 'made', 'state {file} -o {state} --label STRESS --window 40,400 --rotate 90 --flip'
                      ' --shutter circle:20,20,15 --text 3,4,here --polyline "1,1;9,9;1,9"'),
    ('state', 'applied', 'render {file} -o {out} --state {state} --shutter --annotations'),
]

Finding = collections.namedtuple('Finding', 'file call reason text')


def inputs_of(places):
    """All files under the places, each content once, in an order of their own."""
    seen = {}
    for place in places:
        found = [place]
        if os.path.isdir(place):
            found = [os.path.join(root, name) for root, _, names in os.walk(place) for name in names
                     if name != 'README' and not name.endswith(NOT_DICOM)]
        for path in sorted(found):
            with open(path, 'rb') as file:
                seen.setdefault(hashlib.sha256(file.read()).hexdigest(), path)
    return [seen[digest] for digest in sorted(seen)], len(seen)


def cut_files(paths, percents, folder):
    """The files, and the first so many percent of each."""
    cut = []
    for number, path in enumerate(paths):
        with open(path, 'rb') as file:
            whole = file.read()
        for percent in percents:
            name = os.path.join(folder, f'{number}_{percent}_percent_of_{os.path.basename(path)}')
            with open(name, 'wb') as file:
                file.write(whole[:len(whole) * percent // 100])
            cut.append(name)
    return cut


class Runner:
    def __init__(self, options, folder):
        self.options = options
        self.folder = folder
        self.tool = shlex.split(options.under)
        self.must_load = set()
        self.good = {'ct': os.path.join(REPOSITORY, 'samples', 'ct.dcm'),
                     'grey': os.path.join(folder, 'grey.png'), 'colour': os.path.join(folder, 'colour.png')}
        for name, sample in (('grey', 'ct.dcm'), ('colour', 'ultrasound_loop.dcm')):
            subprocess.run([options.quorvex, 'thumbnail', os.path.join(REPOSITORY, 'samples', sample),
                            '-o', self.good[name]], check=True)

    def take(self, path):
        """Every call on one file; answers what went wrong, and how often each status came."""
        findings, statuses = [], collections.Counter()
        with tempfile.TemporaryDirectory(dir=self.folder) as own:
            places = {'file': path, 'out': os.path.join(own, 'out'), 'state': os.path.join(own, 'state.dcm'),
                      **self.good}
            for verb, what, pattern in self.options.calls:
                if (verb, what) == ('state', 'applied') and not os.path.exists(places['state']):
                    continue
                arguments = [part.format(**places) for part in shlex.split(pattern)]
                status, reason, text = self.call(arguments, (verb, what))
                statuses[verb, status] += 1
                if not reason and verb == 'info' and status != 0 and path in self.must_load:
                    reason = 'the manifest says that this file loads'
                if reason:
                    findings.append(Finding(path, f'{verb} ({what})', reason, text))
        return findings, statuses

    def call(self, arguments, name):
        """Runs the command, twice if that is asked for; status, what is wrong, and what it said."""
        out = arguments[arguments.index('-o') + 1] if '-o' in arguments else None
        if not self.options.twice:
            return self.call_once(arguments, out, {})[:3]
        results = [self.call_once(arguments, out, {'MALLOC_PERTURB_': filling}) for filling in FILLINGS]
        first, second = results
        if not first[1] and (second[1] or (first != second and name not in MOMENTARY)):
            return second[0], second[1] or 'the output depends on uninitialised memory', second[2]
        return first[:3]

    def call_once(self, arguments, out, environment):
        try:
            run = subprocess.run([*self.tool, self.options.quorvex, *arguments], capture_output=True,
                                 timeout=self.options.limit, env={**os.environ, **SANITIZERS, **environment})
        except subprocess.TimeoutExpired:
            return 'late', f'takes more than {self.options.limit} s', '', b''
        text = run.stderr.decode(errors='replace')
        reason = trouble_with(run, text, out)
        output = b'' if out else run.stdout
        if out and os.path.exists(out):
            if self.options.twice:
                with open(out, 'rb') as file:
                    output = file.read()
            if not out.endswith('state.dcm'):
                os.remove(out)
        return run.returncode, reason, text, output

    def run(self, paths):
        findings, statuses = [], collections.Counter()
        with concurrent.futures.ThreadPoolExecutor(self.options.jobs) as pool:
            for found, counted in pool.map(self.take, paths):
                findings += found
                statuses += counted
                for finding in found:
                    print(f'{finding.file}: {finding.call}: {finding.reason}\n{finding.text}', flush=True)
        return findings, statuses


def trouble_with(run, text, out):
    """What is wrong with the way a call ended, or an empty text."""
    if run.returncode == REPORT_STATUS or 'Sanitizer' in text or 'runtime error:' in text:
        return 'a report'
    if run.returncode not in (0, 1):
        return f'status {run.returncode}'
    if run.returncode == 1 and not text.startswith('quorvex: '):
        return 'says 1 without a complaint'
    left = out is not None and os.path.exists(out)
    if run.returncode == 1 and left:
        return 'says 1 and leaves an output'
    if run.returncode == 0 and out is not None and not (left and os.path.getsize(out)):
        return 'says 0 and leaves no output'
    return ''


def files_that_load(manifest):
    """Contents of the files that the manifest does not mark."""
    with open(manifest, encoding='utf-8') as file:
        entries = json.load(file)['files']
    beside = os.path.dirname(os.path.abspath(manifest))
    return {os.path.join(beside, entry['file']) for entry in entries if entry['expect']['load'] == 'ok'}


def read_arguments():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawTextHelpFormatter)
    parser.add_argument('quorvex')
    parser.add_argument('places', nargs='+')
    parser.add_argument('--manifest')
    parser.add_argument('--share', default='1/1', help='every Nth file, from the Ith on')
    parser.add_argument('--verbs', default='', help='only these, as in render,frame')
    parser.add_argument('--cuts', default='', help='also the first so many percent of each file')
    parser.add_argument('--under', default='', help='a tool to run the command under')
    parser.add_argument('--twice', action='store_true', help='compare two fillings of fresh memory')
    parser.add_argument('--limit', type=int, default=120, help='seconds for one call')
    parser.add_argument('--jobs', type=int, default=os.cpu_count())
    options = parser.parse_args()
    verbs = set(filter(None, options.verbs.split(',')))
    options.calls = [call for call in CALLS if not verbs or call[0] in verbs]
    return options


def main():
    options = read_arguments()
    started = time.monotonic()
    paths, distinct = inputs_of(options.places)
    index, count = map(int, options.share.split('/'))
    paths = paths[index - 1::count]
    with tempfile.TemporaryDirectory() as folder:
        runner = Runner(options, folder)
        if options.manifest:
            runner.must_load = {os.path.abspath(path) for path in files_that_load(options.manifest)}
        percents = [int(percent) for percent in filter(None, options.cuts.split(','))]
        paths += cut_files(paths, percents, folder)
        findings, statuses = runner.run(paths)
    for verb in dict.fromkeys(verb for verb, _, _ in options.calls):
        ends = {status: number for (of, status), number in statuses.items() if of == verb}
        print(f'{verb:10}', ', '.join(f'{number} x {status}' for status, number in
                                      sorted(ends.items(), key=str)))
    print(f'{len(paths)} of {distinct} files, {sum(statuses.values())} calls, {len(findings)} failed,'
          f' {time.monotonic() - started:.0f} s')
    return 0 if paths and not findings else 1


if __name__ == '__main__':
    sys.exit(main())
