#!/usr/bin/python
# -*- coding: utf-8 -*-
# GNU General Public License v2.0+ (see https://www.gnu.org/licenses/gpl-2.0.txt)

from __future__ import absolute_import, division, print_function
__metaclass__ = type

DOCUMENTATION = r'''
---
module: settings
short_description: Bring a server's settings to a declared state through the norvane agent
version_added: "1.0.0"
description:
  - Takes a settings document (kernel settings, host name, firewall chains,
    FTP, Samba, monitors, interfaces, language, user passwords as crypt(3)
    hashes) and runs C(nvcmd apply --json) on the managed host, which sends
    the agent the fewest set commands that make the server match, in a safe
    order.
  - What the document leaves out is left alone. Lists are declarative; a
    plain list means exactly these entries in this order, or give a mapping
    with C(state) (C(exact), C(present) or C(absent)) and C(items).
  - A document with an unknown key or a bad value is refused before
    anything is sent, naming the item.
  - The format is described in the project's C(docs/settings-format.md) and
    its JSON Schema C(docs/settings-schema.json).
options:
  settings:
    description:
      - The settings document, inline.
      - Mutually exclusive with C(src).
    type: dict
  src:
    description:
      - A settings document (YAML or JSON) in a file on the managed host.
      - Mutually exclusive with C(settings).
    type: path
extends_documentation_fragment:
  - norvane.server.nvcmd
author:
  - norvane developers
notes:
  - Supports check mode (nothing is sent to the agent) and diff mode (each
    changed item's value before and after).
  - A password hash cannot be read back, so an item with one is always sent;
    the agent reports it unchanged when the hash is already the user's.
seealso:
  - module: norvane.server.facts
'''

EXAMPLES = r'''
- name: Same firewall and kernel settings on every web server
  norvane.server.settings:
    settings:
      hostname: "{{ inventory_hostname_short }}"
      kernel:
        tcp_syncookies: true
        icmp_echo_ignore_all: false
      firewall:
        input:
          policy: drop
          rules:
            - {proto: tcp, dport: 22, src: 192.168.1.0/24, action: accept}
            - {proto: tcp, dport: 443, action: accept}

- name: Make sure one more process is monitored, leaving the others
  norvane.server.settings:
    settings:
      monitors:
        processes:
          enabled: true
          commands:
            state: present
            items: [nginx]

- name: Apply a document kept on the server
  norvane.server.settings:
    src: /etc/norvane/settings.yml
'''

RETURN = r'''
items:
  description: Every item the document names, in the order it was carried out.
  returned: always
  type: list
  elements: dict
  contains:
    path:
      description: Where the item sits in the document.
      type: str
      sample: firewall.input.policy
    status:
      description: C(unchanged), C(changed), C(failed), or C(skipped) when an item it needs failed.
      type: str
      sample: changed
    before:
      description: The server's value before.
      type: raw
    after:
      description: The value asked for.
      type: raw
    detail:
      description: The agent's answer when the item failed.
      type: str
      sample: There is no interface named eth9.
    commands:
      description: The agent's set commands for the item.
      type: list
      elements: dict
diff:
  description: The changed items before and after, in the document's form.
  returned: when diff mode is on
  type: dict
'''

from ansible.module_utils.basic import AnsibleModule
from ansible.module_utils.common.text.converters import to_text
from ansible_collections.norvane.server.plugins.module_utils.nvcmd import (
    NVCMD_ARGS, parse_json, run_nvcmd)

import json


def failure_message(report):
    bad = [i for i in report.get('items', []) if i.get('status') in ('failed', 'skipped')]
    if not bad:
        msg = report.get('msg', 'nvcmd apply failed')
        return '%s: %s' % (report['path'], msg) if report.get('path') else msg
    return '; '.join('%s: %s' % (i['path'], i.get('detail', '')) for i in bad)


def main():
    spec = dict(NVCMD_ARGS)
    spec.update(settings=dict(type='dict'), src=dict(type='path'))
    module = AnsibleModule(argument_spec=spec, supports_check_mode=True,
                           mutually_exclusive=[('settings', 'src')],
                           required_one_of=[('settings', 'src')])
    args = ['apply', module.params['src'] or '-', '--json']
    if module.check_mode:
        args.append('--check')
    data = None
    if module.params['settings'] is not None:
        data = json.dumps(module.params['settings'])
    rc, out, err = run_nvcmd(module, args, data=data)
    if rc not in (0, 1, 2) or not out.strip():
        module.fail_json(msg='nvcmd apply failed: %s' % to_text(err or out).strip(), rc=rc)
    report = parse_json(module, out, 'nvcmd apply')
    result = dict(changed=bool(report.get('changed')), items=report.get('items', []))
    if module._diff:
        diff = report.get('diff', {})
        result['diff'] = dict(before=diff.get('before', {}), after=diff.get('after', {}))
    if rc == 1 or report.get('failed'):
        if report.get('path'):
            result['path'] = report['path']
        module.fail_json(msg=failure_message(report), rc=rc, **result)
    module.exit_json(**result)


if __name__ == '__main__':
    main()
