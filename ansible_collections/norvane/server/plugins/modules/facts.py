#!/usr/bin/python
# -*- coding: utf-8 -*-
# GNU General Public License v2.0+ (see https://www.gnu.org/licenses/gpl-2.0.txt)

from __future__ import absolute_import, division, print_function
__metaclass__ = type

DOCUMENTATION = r'''
---
module: facts
short_description: Read a server's settings from the norvane agent as facts
version_added: "1.0.0"
description:
  - Runs C(nvcmd export --format json) on the managed host and returns the
    document as the fact C(norvane_settings).
  - The document has the form that M(norvane.server.settings) takes, so a
    server's settings can be copied to another one.
  - Passwords are never part of it.
options: {}
extends_documentation_fragment:
  - norvane.server.nvcmd
author:
  - norvane developers
notes:
  - Supports check mode; it changes nothing.
'''

EXAMPLES = r'''
- name: Read the settings
  norvane.server.facts:

- name: Show the input chain policy
  ansible.builtin.debug:
    var: norvane_settings.firewall.input.policy
'''

RETURN = r'''
ansible_facts:
  description: The facts gathered.
  returned: always
  type: complex
  contains:
    norvane_settings:
      description: The server's settable settings, grouped by domain.
      returned: always
      type: dict
      sample:
        hostname: web01
        kernel:
          tcp_syncookies: true
        firewall:
          input:
            policy: drop
            rules:
              - {proto: tcp, dport: 22, action: accept}
'''

from ansible.module_utils.basic import AnsibleModule
from ansible_collections.norvane.server.plugins.module_utils.nvcmd import (
    NVCMD_ARGS, parse_json, run_nvcmd)


def main():
    module = AnsibleModule(argument_spec=dict(NVCMD_ARGS), supports_check_mode=True)
    rc, out, err = run_nvcmd(module, ['export', '--format', 'json'])
    if rc != 0:
        module.fail_json(msg='nvcmd export failed: %s' % (err or out).strip(), rc=rc)
    doc = parse_json(module, out, 'nvcmd export')
    module.exit_json(changed=False, ansible_facts=dict(norvane_settings=doc))


if __name__ == '__main__':
    main()
