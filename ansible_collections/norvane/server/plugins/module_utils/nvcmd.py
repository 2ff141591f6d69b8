# -*- coding: utf-8 -*-
# Running the agent's nvcmd tool on the managed host: where it is, which
# socket it talks to, and its JSON answers.
# GNU General Public License v2.0+ (see https://www.gnu.org/licenses/gpl-2.0.txt)

from __future__ import absolute_import, division, print_function
__metaclass__ = type

import json

NVCMD_ARGS = dict(
    nvcmd=dict(type='str', default='nvcmd'),
    socket=dict(type='path'),
)


def nvcmd_path(module):
    """The nvcmd program: a path as given, else looked up in PATH."""
    name = module.params['nvcmd']
    if '/' in name:
        return name
    return module.get_bin_path(name, required=True, opt_dirs=['/usr/sbin', '/usr/local/bin'])


def run_nvcmd(module, args, data=None):
    """Runs nvcmd with args; returns rc, stdout, stderr."""
    env = {'LC_ALL': 'C'}
    if module.params.get('socket'):
        env['NVUI_SOCKET'] = module.params['socket']
    return module.run_command([nvcmd_path(module)] + args, data=data, binary_data=True,
                              environ_update=env, check_rc=False)


def parse_json(module, text, what):
    try:
        return json.loads(text)
    except ValueError:
        module.fail_json(msg='%s did not answer in JSON: %s' % (what, text.strip()[:500]))
